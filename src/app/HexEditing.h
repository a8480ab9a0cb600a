#pragma once

#include "core/ByteDifferences.h"
#include "core/HexCompare.h"
#include "core/HexMatches.h"
#include "core/Job.h"

#include <QByteArray>
#include <QObject>
#include <QStringList>

#include <memory>

class HexModel;
class QUndoStack;

/// What the hex editor's rows mark, one bit for each of a row's sixteen bytes; bit 0 is the first byte.
struct HexRowMarks
{
    quint16 selected = 0;
    quint16 found = 0;
    quint16 changed = 0;
    quint16 different = 0;
    quint16 bookmarked = 0;

    bool operator==(const HexRowMarks &) const = default;
};

/// The hex editor's commands on the open file's bytes: typing, the clipboard, undo, and the ways from one
/// change or difference to the next. Each outcome is said. Belongs to the controller; main thread.
class HexEditing : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool canUndo READ canUndo NOTIFY undoChanged FINAL)
    Q_PROPERTY(bool canRedo READ canRedo NOTIFY undoChanged FINAL)
    /// Bytes that differ from the file as it was opened or last saved, and the runs of them.
    Q_PROPERTY(int changedBytes READ changedBytes NOTIFY changesChanged FINAL)
    Q_PROPERTY(int changedPlaces READ changedPlaces NOTIFY changesChanged FINAL)
    /// "12 bytes changed in 3 places"; empty when none has.
    Q_PROPERTY(QString changesText READ changesText NOTIFY changesChanged FINAL)
    /// "0x10–0x2F, 32 bytes"; empty when nothing is selected.
    Q_PROPERTY(QString selectionText READ selectionText NOTIFY selectionChanged FINAL)
    /// Whether what is typed goes into the column of characters.
    Q_PROPERTY(bool typesText READ typesText WRITE setTypesText NOTIFY typingChanged FINAL)
    /// The first digit of a byte whose second one is not typed yet; else empty.
    Q_PROPERTY(QString pendingDigit READ pendingDigit NOTIFY typingChanged FINAL)
    /// What was gone to, the last first; at most ten.
    Q_PROPERTY(QStringList targets READ targets NOTIFY targetsChanged FINAL)
    /// Offsets to come back to, in ascending order, as they can be gone to. Another file has none.
    Q_PROPERTY(QStringList bookmarks READ bookmarks NOTIFY bookmarksChanged FINAL)
    Q_PROPERTY(HexMatches *matches READ matches CONSTANT FINAL)
    Q_PROPERTY(HexCompare *compare READ compare CONSTANT FINAL)

public:
    enum Format
    {
        AsHex,
        AsText,
        AsCArray,
        AsOffset
    };
    Q_ENUM(Format)

    /// `model` outlives this object.
    explicit HexEditing(HexModel *model, QObject *parent = nullptr);
    ~HexEditing() override;

    HexMatches *matches() const { return m_matches; }
    HexCompare *compare() const { return m_compare; }

    /// Types into the column that is chosen, at the selection's start if there is one. A byte is written when
    /// its second digit is typed. False, with nothing written, if the character does not belong there.
    Q_INVOKABLE bool type(const QString &text);
    /// Takes back the first digit of a byte. False if there is none.
    Q_INVOKABLE bool takeBackDigit();
    /// What is typed next is a step of its own, and begins with a whole byte.
    Q_INVOKABLE void endTyping();
    bool typesText() const { return m_typesText; }
    void setTypesText(bool typesText);
    QString pendingDigit() const { return m_pending; }

    /// Copies the selection, or the byte at the cursor.
    Q_INVOKABLE void copy(HexEditing::Format format);
    /// Overwrites from the cursor, or from the selection's start, with the clipboard's text.
    Q_INVOKABLE void paste();
    /// Overwrites the selection with what FileTools::parseHexQuery reads, again and again.
    Q_INVOKABLE void fill(const QString &query);
    /// Overwrites the selection with its bytes XOR those that parseHexQuery reads, again and again.
    Q_INVOKABLE void xorWith(const QString &query);
    /// Overwrites from the cursor, or from the selection's start, with what a file holds.
    Q_INVOKABLE void pasteFile(const QString &path);
    /// Overwrites every match of one query, in the selection if there is one, by the bytes of another, which
    /// are as many.
    Q_INVOKABLE void replaceAll(const QString &query, const QString &replacement);
    /// Overwrites the bytes at the cursor so that the row at that index of ByteValues reads `text`, unless it
    /// does already. False, with nothing written, if it cannot.
    Q_INVOKABLE bool writeValue(int row, const QString &text, bool bigEndian);
    Q_INVOKABLE void selectAll();

    bool canUndo() const;
    bool canRedo() const;
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();

    int changedBytes() const { return m_changes.bytes(); }
    int changedPlaces() const { return m_changes.places(); }
    QString changesText() const;
    QString selectionText() const;
    Q_INVOKABLE void nextChange();
    Q_INVOKABLE void previousChange();
    /// From now on changes are counted from the present bytes. Undo can go back beyond that.
    void markSaved();

    Q_INVOKABLE void nextDifference();
    Q_INVOKABLE void previousDifference();
    /// Selects the difference at that place of the list.
    Q_INVOKABLE void showDifference(int index);
    /// Copies the selected bytes, or the difference at the cursor, from the other file.
    Q_INVOKABLE void takeOver();

    /// Has a large file's bytes copied on another thread, so that the next change need not copy them at once,
    /// if `held` or the bytes saved last share them.
    void prepare(const QByteArray &held);

    QStringList bookmarks() const;
    /// Sets one at the cursor, or at the selection's start, or removes the one there.
    Q_INVOKABLE void toggleBookmark();
    /// Goes to the next or previous one; after the last one, to the first.
    Q_INVOKABLE void nextBookmark();
    Q_INVOKABLE void previousBookmark();

    QStringList targets() const { return m_targets; }
    void rememberTarget(const QString &target);

    /// For `rows` rows from `firstRow` on.
    QList<HexRowMarks> marks(int firstRow, int rows) const;

signals:
    void undoChanged();
    void changesChanged();
    void selectionChanged();
    void typingChanged();
    void targetsChanged();
    void bookmarksChanged();
    /// Something else is to be marked.
    void marksChanged();
    /// A command has put the cursor where something is to be seen, or has written there.
    void shown();
    /// For the status line, as AppState::setStatus takes it.
    void said(const QString &text, int ok);

private:
    class Overwrite;
    using Step = ByteRange (ByteDifferences::*)(QByteArrayView, QByteArrayView, int) const;

    bool hasFile();
    bool hasOther();
    int editStart() const;
    int stepStart(bool forwards) const;
    void record(int offset, const QByteArray &before);
    void replay(bool undoes);
    QByteArray patternOver(const QString &query);
    bool write(const QByteArray &bytes);
    void startOver();
    void show(const ByteRange &range, const QString &kind, int number, int count);
    void goToChange(Step step);
    void goToDifference(const ByteRange &range);
    void setPending(const QString &digit);
    void setBookmarks(const QList<int> &bookmarks);
    /// From -1, the last one, to their count, the first.
    void goToBookmark(qsizetype index);

    HexModel *m_model;
    HexMatches *m_matches;
    HexCompare *m_compare;
    std::unique_ptr<QUndoStack> m_steps;
    /// The file as opened or saved last; shares the model's buffer until the first change.
    QByteArray m_saved;
    ByteDifferences m_changes;
    Job<QByteArray> m_copying;
    QStringList m_targets;
    /// Ascending.
    QList<int> m_bookmarks;
    bool m_typesText = false;
    QString m_pending;
    /// Typed bytes of one run are one step.
    int m_run = 0;
    bool m_isTyping = false;
    bool m_isReplaying = false;
    /// Whether the last byte was typed, so that the cursor could not go on.
    bool m_isPastEnd = false;
};
