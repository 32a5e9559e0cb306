#pragma once

#include <QString>

// The history as a document: the next sequence number, whether the history
// changed since it was last saved or opened, the file it belongs to, and the
// title the window shows for it. The tick, the document commands and the
// window all read this one copy.
class DocumentState
{
public:
    static inline const QString untitledTitle = QStringLiteral("Untitled.qs_backup");

    // The number the next captured entry gets.
    qint32 getCounter() const { return counter; }
    void setCounter(qint32 value) { counter = value; }

    // 0 clean, 1 changed since the last save or open.
    qint32 eStatus() const { return m_eStatus; }
    void setEStatus(qint32 status) { m_eStatus = status; }
    bool isClean() const { return m_eStatus == 0; }

    const QString &myPath() const { return m_myPath; }
    void setMyPath(const QString &path) { m_myPath = path; }

    // The file's name (or "Untitled.qs_backup"), with "*" while changed, as
    // it was when the tick last made it.
    const QString &title() const { return m_title; }
    void updateTitle();

private:
    qint32 counter = 0;
    qint32 m_eStatus = 0;
    QString m_myPath;
    QString m_title = untitledTitle;
};
