#pragma once

#include <QObject>
#include <QString>

// One Quillstash per desktop session. The first launch owns a well-known name
// on the session bus; a later launch hands its file to that one and ends.
// Without a session bus every launch runs on its own.
class SingleInstance : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "io.github.quillstash.Quillstash")

public:
    static inline const QString serviceName = QStringLiteral("io.github.quillstash.Quillstash");
    static inline const QString objectPath = QStringLiteral("/Quillstash");

    enum Outcome {
        // This process is the one that runs (or there is no bus to ask).
        Running,
        // Another process runs and has the file, if any: this one ends.
        HandedOver,
        // Another process holds the name but did not take the file.
        Failed,
    };

    explicit SingleInstance(QObject *parent = nullptr);

    // Claims the name, or hands file (an absolute path; empty for none) to
    // the process that holds it.
    Outcome claim(const QString &file);

    // The file a launch names: the first argument after the program's own
    // name, made absolute; empty for none. The program has no options.
    static QString fileArgument(const QStringList &arguments);

public Q_SLOTS:
    // Called over the bus by a later launch. Answers at once, so that the
    // launch ends without waiting for a save or a load.
    Q_SCRIPTABLE void OpenFile(const QString &path);

Q_SIGNALS:
    void fileHandedOver(const QString &path);
};
