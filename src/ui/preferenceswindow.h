#pragma once

#include <QDialog>

#include <memory>

class ApplicationRegistries;

namespace Ui {
class PreferencesWindow;
}

// The preferences dialog: the seven switches, the history limit and the
// phrase editor over the settings store. It runs application-modal; Apply
// and OK write the controls into the store in memory (the store reaches the
// user's settings at quit), Cancel or closing the window undoes nothing.
class PreferencesWindow : public QDialog
{
    Q_OBJECT

public:
    explicit PreferencesWindow(ApplicationRegistries &registries, QWidget *parent = nullptr);
    ~PreferencesWindow() override;

    Ui::PreferencesWindow &ui() const { return *m_ui; }

    // The switches and the slider take the store's values and OK becomes
    // the default button. The phrase editor keeps what it shows.
    void loadControls();

public Q_SLOTS:
    // Loads the controls and runs the window modally until OK or Cancel.
    void orderFront(QObject *sender = nullptr);
    void apply(QObject *sender = nullptr);
    void ok(QObject *sender = nullptr);
    void cancel(QObject *sender = nullptr);

    // Escape and the window manager's close button cancel.
    void reject() override;

Q_SIGNALS:
    // Applied phrases are in the store: the phrase menu and its hot keys are due to be built anew.
    void phraseMenuRebuildDue();

private:
    std::unique_ptr<Ui::PreferencesWindow> m_ui;
    ApplicationRegistries &m_registries;
};
