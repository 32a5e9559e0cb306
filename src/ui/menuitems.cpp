#include "ui/menuitems.h"

#include "platform/imagenamed.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

namespace {

struct Row
{
    MenuItems::Id id;
    const char *text;
    QKeySequence::StandardKey standardKey;
    // Used where the desktop defines no binding for the standard key (a bare
    // X11 session has none for Save As or Delete).
    const char *keys;
    // Shown only: a global key of the desktop's does the work.
    const char *globalKeys;
    // A freedesktop icon name, and the program's own drawing when the theme lacks it.
    const char *themeIcon;
    const char *ownImage;
    bool checkable;
};

constexpr QKeySequence::StandardKey none = QKeySequence::UnknownKey;

// clang-format off
const Row rows[] = {
    {MenuItems::Open,            QT_TRANSLATE_NOOP("MenuItems", "&Open…"),         QKeySequence::Open,   "Ctrl+O", nullptr,       "document-open",        nullptr,                false},
    {MenuItems::Save,            QT_TRANSLATE_NOOP("MenuItems", "&Save"),          QKeySequence::Save,   "Ctrl+S", nullptr,       "document-save",        nullptr,                false},
    {MenuItems::SaveAs,          QT_TRANSLATE_NOOP("MenuItems", "Save &As…"),      QKeySequence::SaveAs, "Ctrl+Shift+S", nullptr, "document-save-as",     nullptr,                false},
    {MenuItems::Quit,            QT_TRANSLATE_NOOP("MenuItems", "&Quit"),          QKeySequence::Quit,   "Ctrl+Q", nullptr,       "application-exit",     nullptr,                false},
    {MenuItems::Copy,            QT_TRANSLATE_NOOP("MenuItems", "&Copy"),          QKeySequence::Copy,   "Ctrl+C", nullptr,       "edit-copy",            nullptr,                false},
    {MenuItems::Cut,             QT_TRANSLATE_NOOP("MenuItems", "Cu&t"),           QKeySequence::Cut,    "Ctrl+X", nullptr,       "edit-cut",             nullptr,                false},
    {MenuItems::PasteCapture,    QT_TRANSLATE_NOOP("MenuItems", "&Paste as Manual Capture"), QKeySequence::Paste, "Ctrl+V", nullptr, "edit-paste",       nullptr,                false},
    {MenuItems::Delete,          QT_TRANSLATE_NOOP("MenuItems", "&Delete"),        QKeySequence::Delete, "Del", nullptr,          "edit-delete",          nullptr,                false},
    {MenuItems::ClearHistory,    QT_TRANSLATE_NOOP("MenuItems", "C&lear History"), none,                 nullptr, nullptr,        "edit-clear-history",   nullptr,                false},
    {MenuItems::Compact,         QT_TRANSLATE_NOOP("MenuItems", "Compact"),        none,                 nullptr, nullptr,        "view-restore",         nullptr,                true},
    {MenuItems::StartRecording,  QT_TRANSLATE_NOOP("MenuItems", "&Start Recording"), none,               nullptr, nullptr,        "media-record",         "qs_menu_item_rec_on",  false},
    {MenuItems::StopRecording,   QT_TRANSLATE_NOOP("MenuItems", "S&top Recording"), none,                nullptr, nullptr,        "media-playback-stop",  "qs_menu_item_rec_off", false},
    {MenuItems::ToggleRecording, QT_TRANSLATE_NOOP("MenuItems", "Recording"),      none,                 nullptr, nullptr,        nullptr,                "qs_rec_on_003",        false},
    {MenuItems::ShowWindow,      QT_TRANSLATE_NOOP("MenuItems", "Show Quillstash"), none,                nullptr, nullptr,        nullptr,                "quillstash",           false},
    {MenuItems::Restore,         QT_TRANSLATE_NOOP("MenuItems", "&Restore"),       none,                 nullptr, nullptr,        "edit-undo",            nullptr,                false},
    {MenuItems::ConvertPlainText, QT_TRANSLATE_NOOP("MenuItems", "Convert to &Plain Text"), none,     nullptr, "Ctrl+Alt+P", "edit-clear",       nullptr,                false},
    {MenuItems::Font,            QT_TRANSLATE_NOOP("MenuItems", "&Font…"),         none,                 nullptr, nullptr,        "preferences-desktop-font", nullptr,    false},
    {MenuItems::Preferences,     QT_TRANSLATE_NOOP("MenuItems", "Pre&ferences…"),  QKeySequence::Preferences, "Ctrl+,", nullptr, "preferences-system", nullptr,  false},
    {MenuItems::About,           QT_TRANSLATE_NOOP("MenuItems", "&About Quillstash"), none,              nullptr, nullptr,        "help-about",           "quillstash",           false},
    {MenuItems::OpenLink,        QT_TRANSLATE_NOOP("MenuItems", "Open &Link"),     none,                 nullptr, nullptr,        "internet-web-browser", nullptr,                false},
};
// clang-format on
static_assert(std::size(rows) == MenuItems::Count);

QIcon iconFor(const Row &row)
{
    const QIcon own = row.ownImage ? ImageNamed::iconNamed(QString::fromLatin1(row.ownImage)) : QIcon();
    if (!row.themeIcon)
        return own;
    return QIcon::fromTheme(QString::fromLatin1(row.themeIcon), own);
}

QList<QKeySequence> shortcutsFor(const Row &row)
{
    QList<QKeySequence> keys;
    if (row.standardKey != none)
        keys = QKeySequence::keyBindings(row.standardKey);
    if (keys.isEmpty() && row.keys)
        keys = {QKeySequence(QString::fromLatin1(row.keys))};
    return keys;
}

void addAll(QMenu *menu, const MenuItems &items, std::initializer_list<int> ids)
{
    for (const int id : ids) {
        if (id < 0)
            menu->addSeparator();
        else
            menu->addAction(items.action(MenuItems::Id(id)));
    }
}

constexpr int separator = -1;

// A key shown on an item whose work is done by a global key: the item's own
// shortcut answers only while its menu has the keyboard, so a press never
// runs the command twice.
void showGlobalKey(QAction *action, const QString &keys)
{
    action->setShortcut(QKeySequence(keys));
    action->setShortcutContext(Qt::WidgetShortcut);
}

} // namespace

MenuItems::MenuItems(QObject *parent)
    : QObject(parent)
    , m_contextMenu(std::make_unique<QMenu>())
    , m_trayMenu(std::make_unique<QMenu>())
    , m_recentMenu(std::make_unique<QMenu>(tr("Restore Rec&ent")))
{
    for (const Row &row : rows) {
        Q_ASSERT(!m_actions[row.id]);
        auto *action = new QAction(iconFor(row), tr(row.text), this);
        action->setShortcuts(shortcutsFor(row));
        if (row.globalKeys)
            showGlobalKey(action, QString::fromLatin1(row.globalKeys));
        action->setCheckable(row.checkable);
        m_actions[row.id] = action;
    }

    for (int n = 0; n < recentCount; ++n) {
        m_recent[n] = m_recentMenu->addAction(n == 0 ? tr("Newest") : tr("Newest but %1").arg(n));
        showGlobalKey(m_recent[n], QStringLiteral("Ctrl+Alt+%1").arg(n));
    }

    addAll(m_contextMenu.get(), *this, {Restore, separator, Copy, Cut, Delete, separator, OpenLink});
    addAll(m_trayMenu.get(), *this,
           {ShowWindow, separator, StartRecording, StopRecording, separator, Preferences, About, separator, Quit});
}

MenuItems::~MenuItems() = default;

void MenuItems::setFixedPhraseMenu(QMenu *menu)
{
    m_fixedPhraseMenu = menu;
    m_trayMenu->insertMenu(action(Preferences), menu);
}

void MenuItems::fillMenuBar(QMenuBar *bar) const
{
    addAll(bar->addMenu(tr("&File")), *this, {Open, Save, SaveAs, separator, Quit});
    QMenu *edit = bar->addMenu(tr("&Edit"));
    addAll(edit, *this, {Copy, Cut, PasteCapture, separator, Delete, ClearHistory, separator});
    edit->addMenu(m_recentMenu.get());
    addAll(edit, *this, {ConvertPlainText});
    if (m_fixedPhraseMenu)
        edit->addMenu(m_fixedPhraseMenu);
    addAll(edit, *this, {separator, Preferences});
    addAll(bar->addMenu(tr("&View")), *this, {Compact, Font});
    addAll(bar->addMenu(tr("&Recording")), *this, {StartRecording, StopRecording});
    addAll(bar->addMenu(tr("&Help")), *this, {About});
}
