#pragma once

#include <QMainWindow>

#include <memory>

class CustomTableView;
class MenuItems;
class QLabel;
class QLineEdit;
class QListWidget;
class SearchField;
class QToolButton;

namespace Ui {
class MainWindow;
}

// The main window as laid out in mainwindow.ui: the preview box, the history
// table (mpScrollView) and the status band in the content view, the toolbar
// with the recording button, the compact toggle and the search field. What
// the window does lives in WindowCtrl and the application's wiring.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    Ui::MainWindow &ui() const { return *m_ui; }

    CustomTableView *mpScrollView() const;
    QListWidget *mpTableViewTypes() const;
    QLineEdit *mpTableViewTypeValue() const;
    QLabel *numFieldOfContents() const;
    QLabel *statusString() const;

    // Fills the menu bar and the toolbar with the shared actions.
    void installActions(const MenuItems &items);

    // Null until installActions() has run.
    QToolButton *b_on() const { return m_bOn; }
    QToolButton *compactButton() const { return m_compactButton; }
    SearchField *searchField() const { return m_searchField; }

private:
    std::unique_ptr<Ui::MainWindow> m_ui;
    SearchField *m_searchField;
    QToolButton *m_bOn = nullptr;
    QToolButton *m_compactButton = nullptr;
};
