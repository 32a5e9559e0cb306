#pragma once

#include <QObject>
#include <QString>

class ApplicationRegistries;
class CaptureLoop;
class DocumentState;
class HistoryActions;
class HistoryList;
class Notices;
class Panels;
class UserDefaults;

// Save, Save As, Open, opening a file handed over by the system, and the
// periodic auto-save. The bytes are BackupFile's; this class chooses paths and
// names and keeps the current file, the last folder and the dirty state.
class DocumentCommands : public QObject
{
    Q_OBJECT

public:
    static inline const QString extension = QStringLiteral("qs_backup");
    static constexpr int autoSaveEveryTicks = 100;

    DocumentCommands(HistoryList &nsac, DocumentState &document, CaptureLoop &capture, HistoryActions &actions,
                     Notices &notices, ApplicationRegistries &registries, UserDefaults &defaults, Panels &panels,
                     QObject *parent = nullptr);

    void saveAllObject();
    void saveas();
    void open();
    // application:openFile: — false when the path is empty.
    bool applicationOpenFile(const QString &path);
    void autoSave();

    // The file's bytes (BackupFile) plus what a save and a load do to the history.
    void save(const QString &path);
    // False when the file could not be read at all; an empty file is read.
    bool openFile(const QString &path);

    const QString &lastSavedDirectory() const { return mLastSavedDirectory; }
    // "lastSavedDirectory" in the user defaults: read at launch, written at quit.
    void readLastSavedDirectory();
    void writeLastSavedDirectory();
    bool isSaveAsEnabled() const { return m_saveAsEnabled; }

Q_SIGNALS:
    void saveAsEnabledChanged(bool enabled);
    // Opening from the system shows the main window first.
    void showWindowRequested();

private:
    void enableSaveAs();

    HistoryList &m_nsac;
    DocumentState &m_document;
    CaptureLoop &m_capture;
    HistoryActions &m_actions;
    Notices &m_notices;
    ApplicationRegistries &m_registries;
    UserDefaults &m_defaults;
    Panels &m_panels;
    QString mLastSavedDirectory;
    bool m_saveAsEnabled = false;
    int autosaveCounter = 0;
};
