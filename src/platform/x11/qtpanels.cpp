#include "platform/x11/qtpanels.h"

#include <QApplication>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDialog>
#include <QMessageBox>
#include <QPushButton>

namespace {

// Save As hands over the current file's whole path as the folder; a panel
// opens in the nearest folder that exists, which for a file is its own.
QString existingFolder(const QString &directory)
{
    QFileInfo info(directory.isEmpty() ? QDir::homePath() : directory);
    while (!info.isDir()) {
        const QString parent = info.absolutePath();
        if (parent == info.absoluteFilePath())
            return QDir::homePath();
        info.setFile(parent);
    }
    return info.absoluteFilePath();
}

QString initialPath(const QString &directory, const QString &suggestedName)
{
    return QDir(existingFolder(directory)).filePath(suggestedName);
}

std::optional<Panels::Choice> chosen(const QString &filename)
{
    if (filename.isEmpty())
        return std::nullopt;
    return Panels::Choice{filename, QFileInfo(filename).absolutePath()};
}

} // namespace

std::optional<Panels::Choice> QtPanels::runSavePanel(const QString &directory, const QString &suggestedName)
{
    return chosen(QFileDialog::getSaveFileName(QApplication::activeWindow(), QString(),
                                               initialPath(directory, suggestedName)));
}

std::optional<Panels::Choice> QtPanels::runOpenPanel(const QString &directory, const QString &suggestedName)
{
    return chosen(QFileDialog::getOpenFileName(QApplication::activeWindow(), QString(),
                                               initialPath(directory, suggestedName)));
}

void QtPanels::runAlert(const QString &windowTitle, const QString &message, const QString &informativeText,
                        const QString &button)
{
    QMessageBox box(QMessageBox::Warning, windowTitle, message, QMessageBox::NoButton,
                    QApplication::activeWindow());
    box.setInformativeText(informativeText);
    box.setDefaultButton(box.addButton(button, QMessageBox::AcceptRole));
    box.exec();
}

std::optional<QFont> QtPanels::runFontPanel(const QFont &font)
{
    bool ok = false;
    const QFont chosen = QFontDialog::getFont(&ok, font, QApplication::activeWindow());
    if (!ok)
        return std::nullopt;
    return chosen;
}

Panels::AlertReturn QtPanels::runAlert(const QString &windowTitle, const QString &message,
                                       const QString &informativeText, const QString &defaultButton,
                                       const QString &alternateButton, const QString &otherButton)
{
    QMessageBox box(QMessageBox::Warning, windowTitle, message, QMessageBox::NoButton, QApplication::activeWindow());
    box.setInformativeText(informativeText);
    QPushButton *byDefault = box.addButton(defaultButton, QMessageBox::AcceptRole);
    QPushButton *alternate = box.addButton(alternateButton, QMessageBox::RejectRole);
    box.addButton(otherButton, QMessageBox::DestructiveRole);
    box.setDefaultButton(byDefault);
    box.setEscapeButton(alternate);
    // Shown over every window of the program, and found by its title.
    box.setWindowModality(Qt::ApplicationModal);
    box.exec();
    if (box.clickedButton() == byDefault)
        return AlertReturn::Default;
    if (box.clickedButton() == alternate || !box.clickedButton())
        return AlertReturn::Alternate;
    return AlertReturn::Other;
}
