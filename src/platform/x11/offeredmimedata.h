#pragma once

#include <QHash>
#include <QMimeData>
#include <QStringList>

// What the program offers on the clipboard: formats in the declared order,
// served byte for byte. Plain QMimeData would turn text/uri-list into a list
// of QUrl and write it back normalised, which breaks restoring an entry as it
// was captured. Qt asks for the data only when another program converts, so
// formats may get their data after the clipboard has been taken.
class OfferedMimeData : public QMimeData
{
    Q_OBJECT
public:
    void setFormatData(const QString &format, const QByteArray &data);

    QStringList formats() const override { return m_formats; }
    bool hasFormat(const QString &format) const override { return m_data.contains(format); }

protected:
    QVariant retrieveData(const QString &format, QMetaType preferredType) const override;

private:
    QStringList m_formats;
    QHash<QString, QByteArray> m_data;
};
