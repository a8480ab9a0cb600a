#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>

#include <optional>

#include <atomic>

class QFile;

/// One diagnostic trouble code of a J1939 message.
struct J1939Fault
{
    /// Suspect parameter number, 0 to 524287.
    int spn = 0;
    /// Failure mode identifier, 0 to 31.
    int fmi = 0;
    /// Occurrence count, 0 to 127.
    int oc = 0;
    /// The message's lamp status byte, the same for all of its faults.
    int lamp = 0;
    /// The code's four bytes as upper-case hex digits.
    QString raw;
    QString fmiText;
};

/// Stateless rules on files, names and bytes. Everything is re-entrant and may be called from any thread.
/// Where an `error` pointer is taken it may be null; it is written on failure only.
class FileTools
{
public:
    FileTools() = delete;

    // Disk: FileTools.cpp

    /// The whole file, or an empty array with the system's error text. Only regular files are read: a pipe
    /// would block and a device might never end. A file that an int cannot count is refused.
    static QByteArray readFile(const QString &path, QString *error = nullptr);

    /// Replaces the file in place, creating missing parent folders. False with the system's error text, or
    /// with "Short write." when fewer bytes than asked reached the file.
    static bool writeFile(const QString &path, const QByteArray &data, QString *error = nullptr);

    /// Opens a file for writing, for the user alone, in a folder that others may write to, as the temporary
    /// folder is. False with the system's error text if there is a link, a file with a second hard link,
    /// another user's file or anything but a regular file in its place. Never waits. `mode` may add Append,
    /// else the file is emptied.
    static bool openPrivateFile(QFile &file, QIODevice::OpenMode mode, QString *error = nullptr);

    /// The user's writable documents folder; it need not exist yet.
    static QString documentsDir();

    /// Writes `data` as `fileName` into the documents folder, over an earlier file of that name. Returns the
    /// full path, or an empty string. `fileName` is used as it is: a caller that got it from outside strips
    /// it first.
    static QString exportToDocuments(const QByteArray &data, const QString &fileName,
                                     QString *error = nullptr);

    /// Writes `data` as `fileName` into the temporary folder, by openPrivateFile. Returns the full path, or
    /// an empty string if the result is not the user's own file with exactly these bytes.
    static QString exportToTemporary(const QByteArray &data, const QString &fileName,
                                     QString *error = nullptr);

    /// Opens the folder that holds `path` in the desktop's file browser. The outcome is not known.
    static void revealInExplorer(const QString &path);

    // Hex queries: HexQuery.cpp

    /// What the user typed as bytes: pairs of hex digits (white space and ",;:" between them ignored), else
    /// the trimmed text as UTF-8. Empty for a blank query.
    static QByteArray parseHexQuery(const QString &query);

    /// The first position at or after `from` at which `needle` occurs, or -1; -1 for an empty needle. A
    /// negative `from` counts as 0. Linear in the length of `haystack`, whatever the bytes.
    static int findBytes(const QByteArray &haystack, const QByteArray &needle, int from);

    /// As findBytes, but goes on from the start when there is none from `from` to the end.
    static int findNext(const QByteArray &haystack, const QByteArray &needle, int from);

    /// The last position before `before` at which `needle` occurs; if there is none, the last of all, or -1.
    /// Linear as well.
    static int findPrevious(const QByteArray &haystack, const QByteArray &needle, int before);

    struct Replaced
    {
        /// The first occurrence, or -1.
        int start = -1;
        /// From there to the end of the last one.
        QByteArray bytes;
        int count = 0;
    };
    /// Overwrites each occurrence of `needle` by `replacement`, from the start on; both are equally long,
    /// else nothing is replaced. Linear as well.
    static Replaced replaceBytes(const QByteArray &haystack, const QByteArray &needle,
                                 const QByteArray &replacement);

    /// The offset that a text names: hexadecimal with or without "0x", decimal with a final "d", "end" for
    /// the last of `byteCount` bytes, and with a sign counted from `cursor`. It may lie outside the file.
    /// Nothing if the text names none.
    static std::optional<qint64> parseOffset(const QString &text, int cursor, int byteCount);

    /// An offset, and how many bytes to select there; 0 for none.
    struct Target
    {
        qint64 offset = 0;
        qint64 length = 0;

        bool operator==(const Target &) const = default;
    };

    /// As parseOffset, with ":" and a length after it or without; the length is written as an offset.
    static std::optional<Target> parseTarget(const QString &text, int cursor, int byteCount);

    // Operating-system numbers and names: OsRules.cpp

    /// Whether the workspace opens a file of that name, or path: its suffix is .kvt, in any case.
    static bool isKvtFile(const QString &name);

    /// Ten characters: a decimal digit or letter, seven decimal digits, two letters. Case does not matter.
    static bool isCumminsStyleOs(const QString &text);

    /// Seven to nine decimal digits and nothing else.
    static bool isWeakNumericOs(const QString &text);

    /// The first run of at least six ASCII letters or digits, upper-cased, or an empty string.
    static QString osTokenFromName(const QString &name);

    /// The first four digits in a row that begin with 19 or 20, or an empty string.
    static QString yearFromName(const QString &name);

    /// The identifier record of one control module: "title", "vin", "serial", "mainOs" and "rows", a list of
    /// "label"/"value" maps, one for each pair whose value is not empty. The shorter list bounds the pairs.
    static QVariantMap makeModuleEntry(const QString &title, const QString &vin, const QString &serial,
                                       const QString &mainOs, const QStringList &labels,
                                       const QStringList &values);

    /// `text` with each of \ / : * ? " < > | replaced by "_"; "file" when nothing but white space is left.
    /// Other characters, dots and outer blanks stay.
    static QString sanitizeName(const QString &text);

    /// Identifiers that can be read without the service: none, so the map is always empty. Opening a file
    /// merges it first, which gives local findings their one place.
    static QVariantMap extractKvtIdentifiers(const QByteArray &bytes);

    /// Clears the lists that are given and returns false; the candidates are not looked at.
    static bool groupGmOsCandidates(const QStringList &candidates, QStringList *groupA, QStringList *groupB);

    // Folder search: FolderScan.cpp

    /// The tune files (.kvt and .ctz) in `root` that pass the filters, in the order in which the disk has
    /// them; links and hidden files are left out. Each is a map of texts: "name", "os", "year", "make"
    /// (empty), "size" in bytes and "path" (absolute). An empty filter lets everything pass; `makeFilter` and
    /// `yearFilter` look at the path, the others at the name. A `limit` below 1 is none. Ends early once
    /// `cancel` (may be null) is set, with what it has.
    static QVariantList scanCalFolder(const QString &root, bool recursive, const QString &nameFilter,
                                      const QString &osFilter, const QString &makeFilter,
                                      const QString &yearFilter, int limit, const std::atomic<bool> *cancel);

    // Sorter: Sorter.cpp

    /// The folder names that a file is sorted under, one for each key: "os", "year" and "make" (in any case),
    /// or a key of `meta`. What is not known is named so ("UnknownYear").
    static QStringList folderParts(const QString &fileName, const QVariantMap &meta, const QStringList &keys);

    /// Copies the files into a tree of folders below `destination`, by the comma-separated keys of `order`
    /// ("Year, Make,OS" when it names none), over earlier copies. Returns how many were copied; unreadable
    /// and empty files are passed over. `error` is set when there can be no destination.
    static int sortCopyKvt(const QStringList &files, const QString &destination, const QString &order,
                           QString *error = nullptr);

    // Fault codes: J1939.cpp

    /// The faults in a hex dump of a DM1 message, in its order; anything but hex digits is skipped.
    static QList<J1939Fault> decodeJ1939(const QString &text);
};
