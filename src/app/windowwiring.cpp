#include "app/windowwiring.h"

#include "app/controller.h"
#include "commands/keycommands.h"
#include "documents/documentcommands.h"
#include "history/captureloop.h"
#include "history/historyactions.h"
#include "history/historylist.h"
#include "history/tickpause.h"
#include "recording/recordingswitch.h"
#include "ui/aboutpanel.h"
#include "ui/customtableview.h"
#include "ui/mainwindow.h"
#include "ui/menuitems.h"
#include "ui/preferenceswindow.h"
#include "ui/qsimagecell.h"
#include "ui/recordingindicators.h"
#include "ui/searchfield.h"
#include "ui/statusitem.h"
#include "ui/windowctrl.h"

#include <QAction>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>

WindowWiring::WindowWiring(Controller &controller, std::function<void()> quit, QObject *parent)
    : QObject(parent)
    , m_controller(controller)
    , m_items(new MenuItems(this))
    , m_window(std::make_unique<MainWindow>())
    , m_cell(new QSImageCell(m_previews, this))
{
    m_items->setFixedPhraseMenu(controller.fixedPhrases().mpInsertFixedPhrase());
    m_window->installActions(*m_items);
    m_windowCtrl = new WindowCtrl(m_window.get(), this);
    m_statusItem = new StatusItem(m_items->trayMenu(), this);
    m_indicators = new RecordingIndicators(*m_windowCtrl, m_items->action(MenuItems::ToggleRecording),
                                           *m_statusItem, this);
    controller.setWindowCtrl(m_windowCtrl);
    controller.setStatusItem(m_statusItem);
    m_prefWindow = new PreferencesWindow(controller.registries(), m_window.get());
    m_about = new AboutPanel(controller.services().workspace, m_window.get());

    connectTable();
    connectCommands(std::move(quit));
    connectReports();
}

WindowWiring::~WindowWiring()
{
    m_controller.setWindowCtrl(nullptr);
    m_controller.setStatusItem(nullptr);
    // These refer to the window and the menus, which go with this object's
    // members and children: take them down first.
    delete m_indicators;
    delete m_statusItem;
    delete m_windowCtrl;
}

void WindowWiring::connectTable()
{
    CustomTableView *table = m_window->mpScrollView();
    HistoryList &nsac = m_controller.nsac();
    table->setModel(&nsac);
    table->setSelectionModel(nsac.selectionModel());
    table->setItemDelegate(m_cell);
    table->setNotificationCenter(&m_center);
    table->setNotificationObject(&m_controller);
    table->setContextMenu(m_items->contextMenu());

    connect(&m_center, &NotificationCenter::notificationPosted, this, [this](const QString &name, QObject *sender) {
        if (name == NotificationCenter::retKeyPressedOnTable)
            m_controller.changePasteBoard(sender);
        else if (name == NotificationCenter::delKeyPressedOnTable)
            m_controller.removeObject(sender);
        else if (name == NotificationCenter::onDoubleClickOnTable)
            m_controller.onDoubleClickTable(sender);
    });

    HistoryActions &actions = m_controller.actions();
    connect(&actions, &HistoryActions::scrollTopRequested, table, &QAbstractItemView::scrollToTop);
    connect(&actions, &HistoryActions::scrollBottomRequested, table, &QAbstractItemView::scrollToBottom);
    connect(m_window->searchField(), &SearchField::searchRequested, this, [this](const QString &text) {
        m_controller.nsac().setFilterString(text);
        m_controller.scrollTop();
    });
}

void WindowWiring::connectCommands(std::function<void()> quit)
{
    Controller *c = &m_controller;
    const auto bind = [this](MenuItems::Id id, auto command) {
        QAction *action = m_items->action(id);
        connect(action, &QAction::triggered, this, [action, command] { command(action); });
    };
    bind(MenuItems::Open, [c](QObject *sender) { c->open(sender); });
    bind(MenuItems::Save, [c](QObject *sender) { c->saveAllObject(sender); });
    bind(MenuItems::SaveAs, [c](QObject *sender) { c->saveas(sender); });
    bind(MenuItems::Quit, [quit](QObject *) { quit(); });
    bind(MenuItems::Copy, [c](QObject *sender) { c->copy(sender); });
    bind(MenuItems::Cut, [c](QObject *sender) { c->cut(sender); });
    bind(MenuItems::PasteCapture, [c](QObject *sender) { c->paste(sender); });
    bind(MenuItems::Delete, [c](QObject *sender) { c->removeObject(sender); });
    bind(MenuItems::ClearHistory, [c](QObject *sender) { c->removeAllObject(sender); });
    bind(MenuItems::Compact, [c](QObject *sender) { c->compact(sender); });
    bind(MenuItems::StartRecording, [c](QObject *sender) { c->actionDoAutoRec(sender); });
    bind(MenuItems::StopRecording, [c](QObject *sender) { c->actionCancelAutoRec(sender); });
    bind(MenuItems::ToggleRecording, [c](QObject *sender) { c->toggleAutoRec(sender); });
    bind(MenuItems::ShowWindow, [this](QObject *sender) { m_windowCtrl->open(sender); });
    bind(MenuItems::Restore, [c](QObject *sender) { c->changePasteBoard(sender); });
    bind(MenuItems::OpenLink, [c](QObject *sender) { c->onDoubleClickTable(sender); });
    bind(MenuItems::Preferences, [this](QObject *sender) { showPreferences(sender); });
    bind(MenuItems::About, [this](QObject *sender) { m_about->orderFront(sender); });
    connect(m_prefWindow, &PreferencesWindow::phraseMenuRebuildDue, c, &Controller::setupFixedPhraseMenu);
    bind(MenuItems::ConvertPlainText, [c](QObject *) { c->performSelector("convertUtf8:"); });
    bind(MenuItems::Font, [c](QObject *sender) { c->changeFont(sender); });
    for (int n = 0; n < MenuItems::recentCount; ++n) {
        connect(m_items->recent(n), &QAction::triggered, this,
                [c, selector = "optcmd_" + QByteArray::number(n) + ':'] { c->performSelector(selector); });
    }
    KeyCommands &keys = c->keyCommands();
    connect(&keys, &KeyCommands::openWindowRequested, m_windowCtrl, [this] { m_windowCtrl->_open(); });
    connect(&keys, &KeyCommands::closeWindowRequested, m_windowCtrl, [this] { m_windowCtrl->_close(); });
    connect(&c->fixedPhrases(), &FixedPhrases::contentsFontChanged, m_window->mpScrollView()->viewport(),
            qOverload<>(&QWidget::update));

    QAction *saveAs = m_items->action(MenuItems::SaveAs);
    saveAs->setEnabled(c->documents().isSaveAsEnabled());
    connect(&c->documents(), &DocumentCommands::saveAsEnabledChanged, saveAs, &QAction::setEnabled);
    connect(&c->documents(), &DocumentCommands::showWindowRequested, m_windowCtrl, [this] { m_windowCtrl->open(); });
    connect(m_statusItem, &StatusItem::showWindowRequested, m_windowCtrl, [this] { m_windowCtrl->open(); });
}

void WindowWiring::connectReports()
{
    // The tick tells only what changed; each report updates one widget.
    MainWindow &window = *m_window;
    CaptureLoop &capture = m_controller.capture();
    connect(&capture, &CaptureLoop::entryCountShown, window.numFieldOfContents(),
            [label = window.numFieldOfContents()](int n) { label->setText(QString::number(n)); });
    connect(&capture, &CaptureLoop::titleChanged, m_windowCtrl, [this](const QString &title, bool dirty) {
        m_windowCtrl->setTitlebar(title);
        m_windowCtrl->setDocumentDirty(dirty);
    });
    connect(&capture, &CaptureLoop::typesSourceChanged, this, &WindowWiring::showTypes);
    connect(&capture, &CaptureLoop::currentContentChanged, m_windowCtrl, &WindowCtrl::setContents);
    connect(window.mpTableViewTypes(), &QListWidget::currentTextChanged, window.mpTableViewTypeValue(), &QLineEdit::setText);
    connect(&m_controller.actions(), &HistoryActions::statusStringChanged, window.statusString(), &QLabel::setText);
    window.statusString()->setText(m_controller.statusString());

    RecordingSwitch &recording = m_controller.recording();
    connect(&recording, &RecordingSwitch::recordingAnnounced, m_indicators, &RecordingIndicators::recordingAnnounced);
    connect(&recording, &RecordingSwitch::onOffSignDue, m_indicators, &RecordingIndicators::updateOnOffSign);
}

void WindowWiring::showPreferences(QObject *sender)
{
    if (m_prefWindow->isVisible()) {
        m_prefWindow->orderFront(sender); // only raised: its modal run goes on
        return;
    }
    // The tick stands still until OK or Cancel.
    const TickPause pause(m_controller.capture());
    m_prefWindow->orderFront(sender);
}

void WindowWiring::showTypes(const QStringList &types)
{
    QListWidget *list = m_window->mpTableViewTypes();
    list->clear();
    list->addItems(types);
}
