#pragma once

#include <QString>
#include <QUrl>

#include <array>
#include <atomic>

class LoginItems;
class UserDefaults;

struct _fixedPhrase
{
    QString title;   // null when absent
    QString content; // null when absent
};

// The user's settings while the program runs: loaded from the user defaults
// when created, handed to every part, written back once at quit. Turning
// start-at-login on or off updates the session's login items at once.
class ApplicationRegistries
{
public:
    static constexpr int phraseSlots = 10;

    ApplicationRegistries(UserDefaults &defaults, LoginItems &loginItems, QUrl appURL);
    ~ApplicationRegistries();
    ApplicationRegistries(const ApplicationRegistries &) = delete;
    ApplicationRegistries &operator=(const ApplicationRegistries &) = delete;

    // The most recently created store, or null when none exists.
    static ApplicationRegistries *registries();

    static void setStartAtLogin(LoginItems &loginItems, const QUrl &url, bool enabled);
    static bool willStartAtLogin(const LoginItems &loginItems, const QUrl &url);

    void readRegistry();
    void writeRegistry();

    bool isAutoSave() const { return mbAutoSave; }
    void setAutoSave(bool on) { mbAutoSave = on; }
    bool isAutoRemove() const { return mbAutoRemove; }
    void setAutoRemove(bool on) { mbAutoRemove = on; }
    qint64 limitNumber() const { return miLimitNumber; }
    void setLimitNumber(qint64 limit) { miLimitNumber = limit; }
    bool isSoundEnable() const { return mbSoundEnable; }
    void setSoundEnable(bool on) { mbSoundEnable = on; }
    bool isAutoLaunch() const { return mbAutoLaunch; }
    void setAutoLaunch(bool on);
    bool isIconBounce() const { return mbIconBounce; }
    void setIconBounce(bool on) { mbIconBounce = on; }
    bool isAutoRec() const { return mbAutoRec; }
    void setAutoRec(bool on) { mbAutoRec = on; }
    bool isRecAtStartup() const { return mbRecAtSartup; }
    void setRecAtStartup(bool on) { mbRecAtSartup = on; }

    const QUrl &appURL() const { return m_appURL; }

    // Indexes are the caller's to keep within 0..9.
    QString fixedPhraseTitle(int index) const;
    QString fixedPhraseContent(int index) const;
    void setFixedPhraseTitle(const QString &title, int index);
    void setFixedPhrasContent(const QString &content, int index);

private:
    void readBoolRegOrDefault(const QString &key, bool &result, bool defaultRes);
    void readIntegerRegOrDefault(const QString &key, qint64 &result, qint64 defaultRes);

    UserDefaults &m_defaults;
    LoginItems &m_loginItems;
    QUrl m_appURL;

    bool mbAutoSave = false;
    bool mbAutoRemove = false;
    // Read by each sound's own thread while the preferences may change it.
    std::atomic<bool> mbSoundEnable{false};
    bool mbAutoLaunch = false;
    bool mbIconBounce = false;
    bool mbAutoRec = false;
    bool mbRecAtSartup = false;
    qint64 miLimitNumber = 0;
    std::array<_fixedPhrase, phraseSlots> mPhrase;
};
