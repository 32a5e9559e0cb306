#include "ui/preferenceswindow.h"

#include "settings/applicationregistries.h"
#include "ui/fixedphrasebox.h"
#include "ui/itemnumberbox.h"
#include "ui_preferenceswindow.h"

#include <algorithm>

namespace {

Qt::CheckState stateFor(bool on)
{
    return on ? Qt::Checked : Qt::Unchecked;
}

// A partly checked box counts as off.
bool isOn(const QCheckBox *box)
{
    return box->checkState() == Qt::Checked;
}

} // namespace

PreferencesWindow::PreferencesWindow(ApplicationRegistries &registries, QWidget *parent)
    : QDialog(parent)
    , m_ui(std::make_unique<Ui::PreferencesWindow>())
    , m_registries(registries)
{
    m_ui->setupUi(this);
    m_ui->fpBox->awakeFromNib(registries, this);
    connect(m_ui->applyButton, &QPushButton::clicked, this, [this] { apply(); });
    connect(m_ui->cancelButton, &QPushButton::clicked, this, [this] { cancel(); });
    connect(m_ui->okButton, &QPushButton::clicked, this, [this] { ok(); });
    setWindowModality(Qt::ApplicationModal);
}

PreferencesWindow::~PreferencesWindow() = default;

void PreferencesWindow::loadControls()
{
    m_ui->mBounceButton->setCheckState(stateFor(m_registries.isIconBounce()));
    m_ui->mAutoRecStartButton->setCheckState(stateFor(m_registries.isAutoRec()));
    m_ui->mautosaveButton->setCheckState(stateFor(m_registries.isAutoSave()));
    m_ui->mautoremoveButton->setCheckState(stateFor(m_registries.isAutoRemove()));
    m_ui->mautosoundButton->setCheckState(stateFor(m_registries.isSoundEnable()));
    m_ui->mautolaunchButton->setCheckState(stateFor(m_registries.isAutoLaunch()));
    m_ui->mRecAtStartupButton->setCheckState(stateFor(m_registries.isRecAtStartup()));
    // A limit outside the slider's range shows at the nearer end.
    m_ui->mnumSlider->setValue(int(std::clamp<qint64>(m_registries.limitNumber(), m_ui->mnumSlider->minimum(),
                                                      m_ui->mnumSlider->maximum())));
    m_ui->okButton->setDefault(true);
    m_ui->okButton->setFocus();
}

void PreferencesWindow::orderFront(QObject *sender)
{
    Q_UNUSED(sender);
    // A second modal run inside the first would return to it only after
    // the user closed the window twice.
    if (isVisible()) {
        raise();
        activateWindow();
        return;
    }
    loadControls();
    exec();
}

void PreferencesWindow::apply(QObject *sender)
{
    Q_UNUSED(sender);
    m_registries.setAutoRec(isOn(m_ui->mAutoRecStartButton));
    m_registries.setIconBounce(isOn(m_ui->mBounceButton));
    m_registries.setAutoSave(isOn(m_ui->mautosaveButton));
    m_registries.setAutoRemove(isOn(m_ui->mautoremoveButton));
    m_registries.setSoundEnable(isOn(m_ui->mautosoundButton));
    // Applied on every Apply and OK, changed or not: the login item is put back if it went missing.
    m_registries.setAutoLaunch(isOn(m_ui->mautolaunchButton));
    m_registries.setRecAtStartup(isOn(m_ui->mRecAtStartupButton));
    m_registries.setLimitNumber(m_ui->mnumSlider->value());
    m_ui->fpBox->commitValue();
    Q_EMIT phraseMenuRebuildDue();
}

void PreferencesWindow::ok(QObject *sender)
{
    apply(sender);
    QDialog::accept();
}

void PreferencesWindow::cancel(QObject *sender)
{
    Q_UNUSED(sender);
    QDialog::reject();
}

void PreferencesWindow::reject()
{
    cancel();
}
