#pragma once

#include "api/TransferMeter.h"
#include "api/VoxApiClient.h"
#include "core/HexModel.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantList>
#include <QVariantMap>

#include <functional>
#include <memory>
#include <utility>

class HexEditing;
class WebToolWindow;
struct ScanLink;

/// The one controller behind the window, known to the views as `app`. A view reads its properties and calls
/// its invokables; each outcome is one text on the status line. Everything runs on the main thread.
class AppState : public QObject
{
    Q_OBJECT
    // With newer compilers, moc's code needs the complete type.
    Q_MOC_INCLUDE("app/HexEditing.h")

    // Shell: AppState.cpp
    Q_PROPERTY(QString version READ version CONSTANT FINAL)
    Q_PROPERTY(bool isMacOS READ isMacOS CONSTANT FINAL)
    Q_PROPERTY(QString tab READ tab WRITE setTab NOTIFY tabChanged FINAL)
    Q_PROPERTY(bool busy READ busy NOTIFY busyChanged FINAL)
    Q_PROPERTY(QString status READ status NOTIFY statusChanged FINAL)
    Q_PROPERTY(int statusOK READ statusOK NOTIFY statusChanged FINAL)

    // Workspace and identifiers: AppStateWorkspace.cpp
    Q_PROPERTY(QString fileName READ fileName NOTIFY fileChanged FINAL)
    Q_PROPERTY(QString vin READ vin WRITE setVin NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString serial READ serial WRITE setSerial NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString mainOS READ mainOS WRITE setMainOS NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString system READ system WRITE setSystem NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString fuel READ fuel WRITE setFuel NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString speedometer READ speedometer WRITE setSpeedometer NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString engineDiag READ engineDiag WRITE setEngineDiag NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString engineOp READ engineOp WRITE setEngineOp NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString interfaceID READ interfaceID WRITE setInterfaceID NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QVariantList modules READ modules NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString moduleOneOS READ moduleOneOs NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString created READ created NOTIFY identifiersChanged FINAL)
    Q_PROPERTY(QString editorVersion READ editorVersion NOTIFY identifiersChanged FINAL)

    // Hex editor: AppStateHex.cpp
    Q_PROPERTY(bool showHex READ showHex WRITE setShowHex NOTIFY showHexChanged FINAL)
    Q_PROPERTY(HexModel *hexModel READ hexModel CONSTANT FINAL)

    // XDF store: AppStateXdf.cpp
    Q_PROPERTY(QString xdfEmail READ xdfEmail WRITE setXdfEmail NOTIFY xdfChanged FINAL)
    Q_PROPERTY(QString xdfPassword READ xdfPassword WRITE setXdfPassword NOTIFY xdfChanged FINAL)
    Q_PROPERTY(QString xdfToken READ xdfToken NOTIFY xdfChanged FINAL)
    Q_PROPERTY(QString xdfCredits READ xdfCredits NOTIFY xdfChanged FINAL)
    Q_PROPERTY(QVariantList xdfItems READ xdfItems NOTIFY xdfChanged FINAL)

    // Folder search: AppStateSearch.cpp
    Q_PROPERTY(QVariantList searchHits READ searchHits NOTIFY searchChanged FINAL)
    Q_PROPERTY(bool searchBusy READ searchBusy NOTIFY searchChanged FINAL)

    // Segment swap, patches, stock files: AppStateSegments.cpp, AppStatePatches.cpp, AppStateStock.cpp
    Q_PROPERTY(QVariantList swapCandidates READ swapCandidates NOTIFY segmentsChanged FINAL)
    Q_PROPERTY(QVariantList patchItems READ patchItems NOTIFY patcherChanged FINAL)
    Q_PROPERTY(QVariantList stockRows READ stockRows NOTIFY stockChanged FINAL)

    // Decoded fault codes
    Q_PROPERTY(QVariantList j1939Rows READ j1939Rows NOTIFY toolsChanged FINAL)

    // Texts of the store and of tickets, and options
    Q_PROPERTY(QString catalogText READ catalogText NOTIFY xdfChanged FINAL)
    Q_PROPERTY(QString threadText READ threadText NOTIFY feedbackChanged FINAL)
    Q_PROPERTY(bool vbfSkipVerify READ vbfSkipVerify WRITE setVbfSkipVerify NOTIFY toolsChanged FINAL)
    Q_PROPERTY(QString xcalMode READ xcalMode WRITE setXcalMode NOTIFY toolsChanged FINAL)
    Q_PROPERTY(
        QString searchRecursive READ searchRecursive WRITE setSearchRecursive NOTIFY searchChanged FINAL)

public:
    explicit AppState(QObject *parent = nullptr);
    ~AppState() override;

    // Shell: AppState.cpp
    QString version() const;
    bool isMacOS() const { return true; }
    QString tab() const { return m_tab; }
    bool busy() const { return m_busy; }
    QString status() const { return m_status; }
    int statusOK() const { return m_statusOK; }
    /// `ok` is 1 for success, 0 for failure, -1 for neutral. Announced even when nothing changed.
    Q_INVOKABLE void setStatus(const QString &text, int ok = -1);
    /// Any text is taken; the window shows the first view for a key that it does not know.
    Q_INVOKABLE void setTab(const QString &key);
    Q_INVOKABLE void copyText(const QString &text, const QString &label);
    /// What the manual says of the status: its cause, and what to do. Empty if it says nothing.
    Q_INVOKABLE QString statusHelp() const;
    /// Does nothing; views may call it.
    Q_INVOKABLE void openEditorDebug();
    /// How far the requests to the service are. Belongs to the controller.
    Q_INVOKABLE TransferMeter *transfers() const { return m_transfers; }

    // Workspace and identifiers: AppStateWorkspace.cpp
    QString fileName() const { return m_file.name; }
    QString vin() const { return identifier(QStringLiteral("vin")); }
    QString serial() const { return identifier(QStringLiteral("serial")); }
    QString mainOS() const { return identifier(QStringLiteral("mainOS")); }
    QString system() const { return identifier(QStringLiteral("system")); }
    QString fuel() const { return identifier(QStringLiteral("fuel")); }
    QString speedometer() const { return identifier(QStringLiteral("speedometer")); }
    QString engineDiag() const { return identifier(QStringLiteral("engineDiag")); }
    QString engineOp() const { return identifier(QStringLiteral("engineOp")); }
    QString interfaceID() const { return identifier(QStringLiteral("interfaceID")); }
    QVariantList modules() const { return m_identifiers.value(QStringLiteral("modules")).toList(); }
    QString moduleOneOs() const;
    QString created() const { return identifier(QStringLiteral("created")); }
    QString editorVersion() const { return identifier(QStringLiteral("editorVersion")); }
    Q_INVOKABLE void setVin(const QString &value) { setId(QStringLiteral("vin"), value); }
    Q_INVOKABLE void setSerial(const QString &value) { setId(QStringLiteral("serial"), value); }
    Q_INVOKABLE void setMainOS(const QString &value) { setId(QStringLiteral("mainOS"), value); }
    Q_INVOKABLE void setSystem(const QString &value) { setId(QStringLiteral("system"), value); }
    Q_INVOKABLE void setFuel(const QString &value) { setId(QStringLiteral("fuel"), value); }
    Q_INVOKABLE void setSpeedometer(const QString &value) { setId(QStringLiteral("speedometer"), value); }
    Q_INVOKABLE void setEngineDiag(const QString &value) { setId(QStringLiteral("engineDiag"), value); }
    Q_INVOKABLE void setEngineOp(const QString &value) { setId(QStringLiteral("engineOp"), value); }
    Q_INVOKABLE void setInterfaceID(const QString &value) { setId(QStringLiteral("interfaceID"), value); }
    void setId(const QString &key, const QString &value);
    /// Reads the file whole and asks the service for its identifiers. A failed open keeps the file that was
    /// open.
    Q_INVOKABLE void openKvt(const QString &path);
    /// Writes the current bytes to `path`, which becomes the workspace's file.
    Q_INVOKABLE void saveKvt(const QString &path);
    /// The open file's present content: the hex editor's buffer, or the bytes as opened while that is empty.
    QByteArray currentKvtBytes() const;
    /// Where file dialogs start: the open file's folder, else the documents folder, or the home folder where
    /// there is none.
    Q_INVOKABLE QUrl dialogFolder() const;
    /// A path in which "~" or "~/" at the start is the home folder, as in a shell.
    Q_INVOKABLE QString expandedPath(const QString &path) const;
    /// Whether saving there would write over a file other than the open one.
    Q_INVOKABLE bool replacesOtherFile(const QString &path) const;
    /// The open file's name without its last suffix ("tune" when there is none), followed by `suffix`.
    QString suggestName(const QString &suffix) const;
    /// Sends the bytes as opened; an answer that arrives after another file was opened is dropped.
    void requestKvtInfoFromApi();
    /// Merges what the worker says about the open file.
    void applyKvtInfoJson(const QString &json);

    // Conversions: AppStateConversions.cpp
    /// Converts the file at `path`, or the open file when it is empty, by the conversion of that key. `path2`
    /// is a second input where the conversion takes one; `path3` is not used.
    Q_INVOKABLE void convertOp(const QString &op, const QString &path, const QString &path2 = {},
                               const QString &path3 = {});
    /// Holds the file that later imports of a BIN are based on.
    Q_INVOKABLE void pickBaseKvt(const QString &path);
    /// Converts a calibration container; `path2` is not used.
    Q_INVOKABLE void toolConvert(const QString &kind, const QString &path, const QString &path2 = {});
    /// Sends a file and the extra files to the worker under `operation`; a file that comes back is saved as
    /// `outName` in the documents folder. `fields` and `extraFiles` are (name, value) and (name, bytes)
    /// pairs.
    void workerConvert(const QString &operation, const QByteArray &input, const QString &inputName,
                       const FieldList &fields, const QList<std::pair<QString, QByteArray>> &extraFiles,
                       const QString &outName);

    // Hex editor: AppStateHex.cpp
    bool showHex() const { return m_showHex; }
    Q_INVOKABLE void setShowHex(bool show);
    HexModel *hexModel() const { return m_hexModel; }
    /// The editor's other commands. Belongs to the controller.
    Q_INVOKABLE HexEditing *hexEditing() const { return m_hexEditing; }
    /// Moves the cursor to the next occurrence after it, from the start again when there is none.
    Q_INVOKABLE void hexFind(const QString &query);
    /// As hexFind, towards the start of the file.
    Q_INVOKABLE void hexFindPrevious(const QString &query);
    /// Moves the cursor to the target that FileTools::parseTarget reads, and selects as many bytes as it
    /// says. False, with the reason in the status, when there is none or it is not wholly within the file.
    Q_INVOKABLE bool hexGoTo(const QString &offset);
    /// Writes the selected bytes to a file other than the open one.
    Q_INVOKABLE void hexSaveSelection(const QString &path);
    /// Overwrites the bytes at the cursor with what the query stands for.
    Q_INVOKABLE void hexPatch(const QString &query);
    /// Makes the edited buffer the file's held bytes and closes the hex editor; nothing goes to disk.
    Q_INVOKABLE void hexWriteBack();

    // Segment swap: AppStateSegments.cpp
    QVariantList swapCandidates() const { return m_swap.candidates; }
    /// Remembers the file as the base when `which` is "base", else as the donor; it is read when it is sent.
    Q_INVOKABLE void pickSegmentFile(const QString &which, const QString &path);
    /// Asks the service which segments can be swapped; on failure the current candidates are kept.
    Q_INVOKABLE void previewSegments();
    /// Has the selected candidates swapped; the result is saved and opened as "swapped.kvt".
    Q_INVOKABLE void applySegments();
    Q_INVOKABLE void setCandidateSelected(int index, bool selected);
    Q_INVOKABLE void selectAllCandidates(bool selected);

    // XDF store: AppStateXdf.cpp
    QString xdfEmail() const { return m_xdf.email; }
    QString xdfPassword() const { return m_xdf.password; }
    QString xdfToken() const { return m_xdf.token; }
    QString xdfCredits() const { return m_xdf.credits; }
    QVariantList xdfItems() const { return m_xdf.items; }
    QString catalogText() const { return m_xdf.catalogText; }
    Q_INVOKABLE void setXdfEmail(const QString &email);
    Q_INVOKABLE void setXdfPassword(const QString &password);
    /// Signs in with the address and password that the properties hold.
    Q_INVOKABLE void xdfLogin();
    /// Loads the items for the first module's OS.
    Q_INVOKABLE void xdfCatalog();
    Q_INVOKABLE void xdfDownload(int index);

    // Folder search: AppStateSearch.cpp
    QVariantList searchHits() const { return m_search.hits; }
    bool searchBusy() const { return m_search.busy; }
    QString searchRecursive() const;
    /// Only "0" turns recursion off.
    Q_INVOKABLE void setSearchRecursive(const QString &text);
    /// Walks the folder in a thread of its own; one scan at a time.
    Q_INVOKABLE void scanFolder(const QString &root, bool recursive, const QString &nameQ, const QString &osQ,
                                const QString &makeQ, const QString &yearQ);
    /// Asks a running scan to stop; what it has found so far is kept.
    Q_INVOKABLE void cancelScan();
    /// Empties the list and stops a running scan, whose hits then still arrive.
    Q_INVOKABLE void clearSearch();
    /// Opens a hit in the workspace, if it is a .kvt file.
    Q_INVOKABLE void openSearchHit(int index);
    /// Whether something dropped on the window can be searched; a link to a folder can.
    Q_INVOKABLE bool isFolder(const QString &path) const;
    /// Whether the workspace opens a file of that name.
    Q_INVOKABLE bool isKvtFile(const QString &path) const;
    /// Opens the folder of a file with the desktop's program.
    Q_INVOKABLE void showFolder(const QString &path);

    // Sorter: AppStateSorter.cpp
    Q_INVOKABLE void sortCopy(const QStringList &files, const QString &dest, const QString &order);

    // BIN patches: AppStatePatches.cpp
    QVariantList patchItems() const { return m_patches.items; }
    /// Lists the patches for an identifier, the first module's OS when it is empty.
    Q_INVOKABLE void loadPatches(const QString &calId);
    /// Has a copy of the BIN at `path` patched; the copy is saved in the documents folder.
    Q_INVOKABLE void applyPatchToBin(int index, const QString &path);

    // Stock files: AppStateStock.cpp
    QVariantList stockRows() const { return m_stockRows; }
    Q_INVOKABLE void stockSearch(const QVariantMap &filters);
    Q_INVOKABLE void stockSearchFields(const QString &make, const QString &fileType, const QString &folder,
                                       const QString &module, const QString &model, const QString &os,
                                       const QString &keyword, const QString &sort, const QString &sortDir);
    Q_INVOKABLE void clearStock();
    /// Saves the file in the documents folder, or with `openKvt` opens it if it is a tune file.
    Q_INVOKABLE void stockDownload(int index, bool openKvt);
    /// What a stock file of that name is saved as.
    Q_INVOKABLE QString stockFileName(const QString &filename) const;

    // Tools and conversion options: AppStateTools.cpp
    QVariantList j1939Rows() const { return m_tools.j1939Rows; }
    bool vbfSkipVerify() const { return m_tools.vbfSkipVerify; }
    QString xcalMode() const { return m_tools.xcalMode; }
    Q_INVOKABLE void setVbfSkipVerify(bool skip);
    Q_INVOKABLE void setXcalMode(const QString &mode);
    /// Turns a pasted hex dump into one line per fault.
    Q_INVOKABLE void decodeJ1939(const QString &hex);
    /// Starts one of the helper programs by its key.
    Q_INVOKABLE void launchTool(const QString &name);
    /// Shows the user manual with the desktop's document viewer.
    Q_INVOKABLE void goHelp();
    /// The service's full address of a path below its API base.
    Q_INVOKABLE QString serviceUrl(const QString &path) const;
    /// The address of the store's web site.
    Q_INVOKABLE QString storeUrl() const;
    /// Hands an address to the desktop; whether anything could open it is not known.
    Q_INVOKABLE void openWebTool(const QString &url, const QString &title);

    // Tickets and updates: AppStateFeedback.cpp
    QString threadText() const { return m_threadText; }
    Q_INVOKABLE void sendToDev(const QString &email, const QString &notes);
    Q_INVOKABLE void submitTicket(const QString &type, const QString &name, const QString &email,
                                  const QString &desc);
    Q_INVOKABLE void loadTicket(const QString &ticket);
    /// Loads the conversation again once the reply was taken.
    Q_INVOKABLE void replyTicket(const QString &ticket, const QString &message);
    Q_INVOKABLE void checkUpdate();

signals:
    void tabChanged();
    void busyChanged();
    void statusChanged();
    void fileChanged();
    void identifiersChanged();
    void showHexChanged();
    void xdfChanged();
    void searchChanged();
    void segmentsChanged();
    void patcherChanged();
    void stockChanged();
    void toolsChanged();
    void feedbackChanged();

private:
    // Shell
    void setBusy(bool busy);
    /// Whether there is an error; it is then on the status line.
    bool failed(const QString &error);
    /// The file's bytes; when there are none, the reason is on the status line.
    QByteArray readInput(const QString &path);
    /// Moves the cursor to what `find` finds, and says so.
    void hexFindBy(const QString &query, const std::function<int(const QByteArray &needle)> &find);
    /// Saves a file in the documents folder and shows the folder. The file's path; when it could not be
    /// saved, an empty one, with the reason on the status line.
    QString saveToDocuments(const QByteArray &bytes, const QString &name);

    VoxApiClient *m_client;
    HexModel *m_hexModel;
    HexEditing *m_hexEditing;
    TransferMeter *m_transfers;
    QString m_tab = QStringLiteral("main");
    bool m_busy = false;
    QString m_status;
    int m_statusOK = -1;

    // Workspace and identifiers
    QString identifier(const QString &key) const { return m_identifiers.value(key).toString(); }
    void applyKvtInfo(const QJsonObject &answer);

    struct OpenFile
    {
        QString path;
        QString name;
        QByteArray bytes;
        /// Counts opens, so that an answer about an earlier file is known as such.
        quint64 generation = 0;
    } m_file;
    QVariantMap m_identifiers;

    // Conversions
    void finishConversion(const WorkerResult &result, const QString &outName);

    QByteArray m_baseKvt;

    // Hex editor
    bool m_showHex = false;

    // XDF store
    struct XdfState
    {
        QString email;
        QString password;
        QString token;
        QString credits;
        QVariantList items;
        QString catalogText;
    } m_xdf;

    // Folder search
    void finishScan(const QVariantList &hits, bool cancelled, int limit);

    struct SearchState
    {
        QVariantList hits;
        bool busy = false;
        bool recursive = true;
        std::shared_ptr<ScanLink> link;
    } m_search;

    // Segment swap
    /// The file to swap into; empty, with a word on the status line, unless there is one and a donor.
    QString swapBase();

    struct SwapState
    {
        QString basePath;
        QString donorPath;
        QVariantList candidates;
    } m_swap;

    // BIN patches
    struct PatchState
    {
        QVariantList items;
        /// What the list was asked for; sent again with every patch.
        QString calId;
    } m_patches;

    // Stock files
    void finishStockDownload(const QByteArray &bytes, const QString &filename, bool open);

    QVariantList m_stockRows;

    // Tools and conversion options
    struct ToolsState
    {
        QVariantList j1939Rows;
        bool vbfSkipVerify = false;
        QString xcalMode = QStringLiteral("kvt");
    } m_tools;
    std::unique_ptr<WebToolWindow> m_webTool;

    // Tickets and updates
    QString m_threadText;
};
