#include "platform/x11/canberrasoundplayer.h"

#include <QCoreApplication>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QMutex>

#include <canberra.h>

Q_LOGGING_CATEGORY(lcSound, "quillstash.sound", QtWarningMsg)

namespace {

struct SoundName
{
    const char *name;
    const char *eventId;
};

// The nearest sound of the freedesktop theme for each of the program's names.
constexpr SoundName sounds[] = {
    {"Pop", "message-new-instant"},   // an entry captured
    {"Tink", "bell"},                 // an entry chosen by key
    {"Submarine", "complete"},        // an entry put back on the clipboard
    {"Bottle", "trash-empty"},        // an entry removed
    {"Hero", "service-login"},        // recording on, a phrase or date placed
    {"Purr", "service-logout"},       // recording off
};

constexpr auto soundFileSuffix = ".wav";

} // namespace

CanberraSoundPlayer::CanberraSoundPlayer(Sources sources) : m_sources(sources) {}

QByteArray CanberraSoundPlayer::eventId(const QString &name)
{
    for (const SoundName &sound : sounds) {
        if (name == QLatin1String(sound.name))
            return QByteArray(sound.eventId);
    }
    return {};
}

QString CanberraSoundPlayer::soundFile(const QString &name)
{
    if (eventId(name).isEmpty())
        return {};
    const QString fileName = name + QLatin1String(soundFileSuffix);
    const QStringList folders{
        QCoreApplication::applicationDirPath() + QStringLiteral("/../share/quillstash/sounds"),
#ifdef QUILLSTASH_SOURCE_DATA_DIR
        // A program run from its build folder, not installed.
        QStringLiteral(QUILLSTASH_SOURCE_DATA_DIR "/sounds"),
#endif
    };
    for (const QString &folder : folders) {
        const QFileInfo file(folder + u'/' + fileName);
        if (file.isFile())
            return file.canonicalFilePath();
    }
    return {};
}

// One context for the whole process, never destroyed. libcanberra's ALSA
// backend unloads its module on ca_context_destroy() while the threads of
// sounds it has just finished are still returning through its code; destroying
// a context shortly after a sound crashes the program.
ca_context *CanberraSoundPlayer::context()
{
    static QBasicMutex mutex;
    static ca_context *shared = nullptr;
    static bool failed = false;

    QMutexLocker locker(&mutex);
    if (shared || failed)
        return shared;
    int rc = ca_context_create(&shared);
    if (rc == CA_SUCCESS) {
        rc = ca_context_change_props(shared, CA_PROP_APPLICATION_NAME, "Quillstash",
                                     CA_PROP_APPLICATION_ID, "quillstash",
                                     CA_PROP_APPLICATION_ICON_NAME, "quillstash", nullptr);
    }
    if (rc != CA_SUCCESS) {
        qCDebug(lcSound) << "No sound:" << ca_strerror(rc);
        if (shared)
            ca_context_destroy(shared); // nothing has played on it yet
        shared = nullptr;
        // Without a sound system there is nothing to retry for.
        failed = true;
    }
    return shared;
}

void CanberraSoundPlayer::play(const QString &name)
{
    const QByteArray id = eventId(name);
    if (id.isEmpty()) {
        qCDebug(lcSound) << "No such sound:" << name;
        m_lastOutcome = Outcome::None;
        return;
    }
    ca_context *ctx = context();
    if (!ctx) {
        m_lastOutcome = Outcome::Failed;
        return;
    }

    // libcanberra starts the sound and returns; the context locks itself.
    int rc = CA_ERROR_NOTFOUND;
    if (m_sources == Sources::ThemeThenOwnFiles) {
        rc = ca_context_play(ctx, 0, CA_PROP_EVENT_ID, id.constData(), CA_PROP_EVENT_DESCRIPTION,
                             name.toUtf8().constData(), nullptr);
        if (rc == CA_SUCCESS) {
            m_lastOutcome = Outcome::Theme;
            return;
        }
    }
    if (rc == CA_ERROR_NOTFOUND) {
        const QString file = soundFile(name);
        if (!file.isEmpty()) {
            rc = ca_context_play(ctx, 0, CA_PROP_MEDIA_FILENAME, file.toUtf8().constData(),
                                 CA_PROP_EVENT_DESCRIPTION, name.toUtf8().constData(),
                                 CA_PROP_CANBERRA_CACHE_CONTROL, "volatile", nullptr);
            if (rc == CA_SUCCESS) {
                m_lastOutcome = Outcome::File;
                return;
            }
        }
    }
    qCDebug(lcSound) << "Sound" << name << "not played:" << ca_strerror(rc);
    m_lastOutcome = Outcome::Failed;
}
