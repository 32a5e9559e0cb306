#include "ui/mainwindow.h"

#include "ui/menuitems.h"
#include "ui/searchfield.h"
#include "ui_mainwindow.h"

#include <QAction>
#include <QToolButton>

namespace {
constexpr int searchFieldWidth = 220;
}

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
    , m_ui(std::make_unique<Ui::MainWindow>())
    , m_searchField(new SearchField(this))
{
    m_ui->setupUi(this);
    m_searchField->setObjectName(QStringLiteral("searchField"));
    m_searchField->setPlaceholderText(tr("Search"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setMaximumWidth(searchFieldWidth);
}

MainWindow::~MainWindow() = default;

void MainWindow::installActions(const MenuItems &items)
{
    items.fillMenuBar(m_ui->menubar);

    QToolBar *toolbar = m_ui->toolbar;
    toolbar->addAction(items.action(MenuItems::ToggleRecording));
    toolbar->addAction(items.action(MenuItems::Compact));
    m_bOn = qobject_cast<QToolButton *>(toolbar->widgetForAction(items.action(MenuItems::ToggleRecording)));
    m_compactButton = qobject_cast<QToolButton *>(toolbar->widgetForAction(items.action(MenuItems::Compact)));
    Q_ASSERT(m_bOn && m_compactButton);
    m_bOn->setObjectName(QStringLiteral("b_on"));
    m_compactButton->setObjectName(QStringLiteral("compactButton"));

    // The search field sits at the toolbar's right end.
    auto *spacer = new QWidget(toolbar);
    spacer->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    toolbar->addWidget(spacer);
    toolbar->addWidget(m_searchField);
}

CustomTableView *MainWindow::mpScrollView() const
{
    return m_ui->mpScrollView;
}

QListWidget *MainWindow::mpTableViewTypes() const
{
    return m_ui->mpTableViewTypes;
}

QLineEdit *MainWindow::mpTableViewTypeValue() const
{
    return m_ui->mpTableViewTypeValue;
}

QLabel *MainWindow::numFieldOfContents() const
{
    return m_ui->numFieldOfContents;
}

QLabel *MainWindow::statusString() const
{
    return m_ui->statusString;
}
