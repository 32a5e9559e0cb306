#pragma once

#include <QGroupBox>
#include <QString>

class ApplicationRegistries;
class PreferencesWindow;
class QLabel;
class QLineEdit;
class QPlainTextEdit;

// The editor of the nine fixed phrases, one at a time: the phrase's hot key,
// its title and its content, with buttons that step through phrases 1 to 9.
// Its parts come from the preferences form; awakeFromNib() finds and
// connects them once the form is built.
//
// The fields are loaded from the store when the box is drawn showing a phrase
// other than the one loaded last (postIndex), not when the window opens: text
// typed and then cancelled stays in the fields until the next commit.
class FixedPhraseBox : public QGroupBox
{
    Q_OBJECT

public:
    // The modifiers of the phrase hot keys, as they are named on this desktop.
    static inline const QString constStringFixPhrase = QStringLiteral("Ctrl+Alt+Shift+");
    // The phrase whose text a box last loaded into its fields; -1 before any.
    static inline int postIndex = -1;

    explicit FixedPhraseBox(QWidget *parent = nullptr);

    void awakeFromNib(ApplicationRegistries &registries, PreferencesWindow *window);

    void buildStr(int n);
    void syncText();
    void commitValue();

public Q_SLOTS:
    void left(QObject *sender = nullptr);
    void right(QObject *sender = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    void fitNumberLabel();

    ApplicationRegistries *m_registries = nullptr;
    int index = 1;
    QLineEdit *titleFP = nullptr;
    QPlainTextEdit *contentFP = nullptr;
    QLabel *numberFP = nullptr;
    PreferencesWindow *prefWindow = nullptr;
};
