#include "settings/applicationregistries.h"

#include "platform/loginitems.h"
#include "platform/userdefaults.h"

namespace {

ApplicationRegistries *gApplicationRegistries = nullptr;

std::optional<LoginItems::Item> firstMatch(const QList<LoginItems::Item> &items, const QUrl &url)
{
    for (const LoginItems::Item &item : items) {
        if (!item.resolved.isEmpty() && item.resolved == url)
            return item;
    }
    return std::nullopt;
}

QString phraseKey(const char *stem, int slot)
{
    return QString::fromLatin1(stem) + QString::number(slot);
}

} // namespace

ApplicationRegistries::ApplicationRegistries(UserDefaults &defaults, LoginItems &loginItems, QUrl appURL)
    : m_defaults(defaults)
    , m_loginItems(loginItems)
    , m_appURL(std::move(appURL))
{
    gApplicationRegistries = this;
    readRegistry();
}

ApplicationRegistries::~ApplicationRegistries()
{
    if (gApplicationRegistries == this)
        gApplicationRegistries = nullptr;
}

ApplicationRegistries *ApplicationRegistries::registries()
{
    return gApplicationRegistries;
}

void ApplicationRegistries::setStartAtLogin(LoginItems &loginItems, const QUrl &url, bool enabled)
{
    const std::optional<QList<LoginItems::Item>> items = loginItems.snapshot();
    if (!items)
        return;
    const std::optional<LoginItems::Item> match = firstMatch(*items, url);
    if (enabled && !match)
        loginItems.insertAtTop(url);
    else if (!enabled && match)
        loginItems.remove(*match);
}

bool ApplicationRegistries::willStartAtLogin(const LoginItems &loginItems, const QUrl &url)
{
    const std::optional<QList<LoginItems::Item>> items = loginItems.snapshot();
    return items && firstMatch(*items, url).has_value();
}

void ApplicationRegistries::readBoolRegOrDefault(const QString &key, bool &result, bool defaultRes)
{
    result = m_defaults.objectForKey(key).isValid() ? m_defaults.boolForKey(key) : defaultRes;
}

void ApplicationRegistries::readIntegerRegOrDefault(const QString &key, qint64 &result, qint64 defaultRes)
{
    result = m_defaults.objectForKey(key).isValid() ? m_defaults.integerForKey(key) : defaultRes;
}

void ApplicationRegistries::readRegistry()
{
    readBoolRegOrDefault(QStringLiteral("autosave"), mbAutoSave, false);
    readBoolRegOrDefault(QStringLiteral("autoremove"), mbAutoRemove, true);
    readIntegerRegOrDefault(QStringLiteral("limitnumber"), miLimitNumber, 60);
    bool soundEnable = true;
    readBoolRegOrDefault(QStringLiteral("soundenable"), soundEnable, true);
    mbSoundEnable = soundEnable;
    readBoolRegOrDefault(QStringLiteral("autolaunch"), mbAutoLaunch, false);
    readBoolRegOrDefault(QStringLiteral("iconbounce"), mbIconBounce, true);
    readBoolRegOrDefault(QStringLiteral("autorec"), mbAutoRec, true);
    readBoolRegOrDefault(QStringLiteral("recatstartup"), mbRecAtSartup, true);

    // Brings the login items in line with the stored setting, both ways.
    setAutoLaunch(mbAutoLaunch);

    for (int n = 1; n <= 9; ++n) {
        const QString titleKey = phraseKey("phrase_title", n);
        setFixedPhraseTitle(m_defaults.objectForKey(titleKey).isValid() ? m_defaults.stringForKey(titleKey)
                                                                         : QString(),
                            n);
        const QString contentKey = phraseKey("phrase_content", n);
        setFixedPhrasContent(m_defaults.objectForKey(contentKey).isValid() ? m_defaults.stringForKey(contentKey)
                                                                            : QString(),
                             n);
    }
}

void ApplicationRegistries::writeRegistry()
{
    m_defaults.setBool(mbAutoSave, QStringLiteral("autosave"));
    m_defaults.setBool(mbAutoRemove, QStringLiteral("autoremove"));
    m_defaults.setInteger(miLimitNumber, QStringLiteral("limitnumber"));
    m_defaults.setBool(mbSoundEnable.load(), QStringLiteral("soundenable"));
    m_defaults.setBool(mbAutoLaunch, QStringLiteral("autolaunch"));
    m_defaults.setBool(mbIconBounce, QStringLiteral("iconbounce"));
    m_defaults.setBool(mbAutoRec, QStringLiteral("autorec"));
    m_defaults.setBool(mbRecAtSartup, QStringLiteral("recatstartup"));

    // A cleared phrase is skipped, not removed: its last stored text stays.
    for (int n = 1; n <= 9; ++n) {
        if (!mPhrase[n].title.isNull())
            m_defaults.setValue(mPhrase[n].title, phraseKey("phrase_title", n));
        if (!mPhrase[n].content.isNull())
            m_defaults.setValue(mPhrase[n].content, phraseKey("phrase_content", n));
    }
}

void ApplicationRegistries::setAutoLaunch(bool on)
{
    mbAutoLaunch = on;
    setStartAtLogin(m_loginItems, m_appURL, on);
}

QString ApplicationRegistries::fixedPhraseTitle(int index) const
{
    return mPhrase[index].title;
}

QString ApplicationRegistries::fixedPhraseContent(int index) const
{
    return mPhrase[index].content;
}

void ApplicationRegistries::setFixedPhraseTitle(const QString &title, int index)
{
    mPhrase[index].title = title;
}

void ApplicationRegistries::setFixedPhrasContent(const QString &content, int index)
{
    mPhrase[index].content = content;
}
