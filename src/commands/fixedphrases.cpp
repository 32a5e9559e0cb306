#include "commands/fixedphrases.h"

#include "history/captureloop.h"
#include "history/historylist.h"
#include "platform/clock.h"
#include "platform/panels.h"
#include "platform/pasteboard.h"
#include "platform/pasteboardtype.h"
#include "platform/userdefaults.h"
#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "settings/applicationregistries.h"

#include <QAction>
#include <QKeySequence>
#include <QLocale>
#include <QMenu>

FixedPhrases::FixedPhrases(const Services &services, QObject *parent)
    : QObject(parent)
    , m_services(services)
    , m_menu(std::make_unique<QMenu>(QStringLiteral("&Insert Fixed Phrase")))
{
}

FixedPhrases::~FixedPhrases() = default;

quint32 FixedPhrases::digitKeyCode(int digit)
{
    // The digit row's keys are not numbered in order.
    constexpr quint32 codes[] = {29, 18, 19, 20, 21, 23, 22, 26, 28, 25};
    return codes[digit];
}

void FixedPhrases::setTarget(HotKeyRegistrar registrar, SelectorPerformer performer)
{
    m_registrar = std::move(registrar);
    m_performer = std::move(performer);
}

void FixedPhrases::setupFixedPhraseMenu()
{
    const QList<QAction *> items = m_menu->actions();
    for (qsizetype i = items.size() - 1; i >= 0; --i) {
        m_menu->removeAction(items.at(i));
        delete items.at(i);
    }

    prepareMenuAndHotkey("OnAddDate:", phraseModifiers, QStringLiteral("date w/time"), QStringLiteral("0"),
                         digitKeyCode(0));
    // Phrase 0 has no place here: the 0 key belongs to the date.
    for (int index = 1; index <= 9; ++index) {
        const QString title = m_services.registries.fixedPhraseTitle(index);
        if (title.isNull())
            continue;
        prepareMenuAndHotkey("OnFixed_" + QByteArray::number(index) + ':', phraseModifiers, title,
                             QString::number(index), digitKeyCode(index));
    }
}

void FixedPhrases::prepareMenuAndHotkey(const QByteArray &selector, quint64 mask, const QString &title,
                                        const QString &key, quint32 keyReg)
{
    auto *item = new QAction(title, m_menu.get());
    // The key is shown as this desktop writes it. The global key does the
    // work; the shortcut answers only while the menu itself has the keyboard.
    QKeyCombination combination = QKeyCombination::fromCombined(QKeySequence(key)[0].toCombined());
    Qt::KeyboardModifiers modifiers;
    if (mask & 0x20000)
        modifiers |= Qt::ShiftModifier;
    if (mask & 0x80000)
        modifiers |= Qt::AltModifier;
    if (mask & 0x100000)
        modifiers |= Qt::ControlModifier;
    item->setShortcut(QKeySequence(QKeyCombination(modifiers, combination.key())));
    item->setShortcutContext(Qt::WidgetShortcut);
    item->setEnabled(true);
    connect(item, &QAction::triggered, this, [this, selector] {
        if (m_performer)
            m_performer(selector);
    });
    if (m_registrar)
        m_registrar(keyReg, mask, selector);
    m_menu->addAction(item);
}

void FixedPhrases::OnFixed(int index)
{
    const QString content = m_services.registries.fixedPhraseContent(index);
    if (content.isNull())
        return;
    putOwnText(content);
    m_services.notices.messageGrowl(QStringLiteral("Change to Fixed Text Phrase #%1").arg(index), content,
                                    Notices::RemovePasteboardNotification);
    m_services.eventTimer.setSoundName(QStringLiteral("Hero"));
}

QString FixedPhrases::dateText() const
{
    const QStringList languages = m_services.defaults.objectForKey(QStringLiteral("AppleLanguages")).toStringList();
    const QLocale locale(languages.value(0));
    return locale.toString(m_services.clock.date(), QLocale::LongFormat);
}

void FixedPhrases::OnAddDate()
{
    const QString text = dateText();
    if (text.isEmpty())
        return;
    putOwnText(text);
    // The notice tells what the clipboard holds after the capture pass.
    const Entry &current = m_services.capture.currentContent();
    m_services.notices.messageGrowl(QStringLiteral("Change to Date"), current ? current->content() : QString(),
                                    Notices::RemovePasteboardNotification);
    m_services.eventTimer.setSoundName(QStringLiteral("Hero"));
}

void FixedPhrases::putOwnText(const QString &text)
{
    // The marker keeps the automatic capture from recording our own text.
    m_services.pasteboard.declareTypes({PasteboardType::Utf8PlainText, PasteboardType::Ignore});
    m_services.pasteboard.setData(text.toUtf8(), PasteboardType::Utf8PlainText);
    m_services.capture.MainTimer();
}

void FixedPhrases::changeFont()
{
    const std::optional<QFont> font = m_services.panels.runFontPanel(contents::contentsFont());
    if (!font)
        return;
    contents::setContentsFont(*font);
    // Only the shown entries are drawn again now; the others when next shown.
    m_services.nsac.redrawArrangedPreviews(m_services.fetcher);
    Q_EMIT contentsFontChanged();
}
