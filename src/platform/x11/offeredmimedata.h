#pragma once

#include <QHash>
#include <QMimeData>
#include <QStringList>

// What the program offers on the clipboard: formats in the declared order,
// served byte for byte. Plain QMimeData would turn text/uri-list into a list
// of QUrl and write it back normalised, which breaks restoring an entry as it
// was captured. Qt asks for the data only when another program converts, so
// formats may get their data after the clipboard has been taken.
//
// A picture is also offered in the common encodings it was not stored in,
// made from the stored one when a reader asks, as QClipboard does for any
// QImage: the history keeps only a picture's PNG and TIFF, and a program that
// pastes BMP or JPEG only must still get it.
class OfferedMimeData : public QMimeData
{
    Q_OBJECT
public:
    void setFormatData(const QString &format, const QByteArray &data);

    QStringList formats() const override { return m_formats + convertibleFormats(); }
    bool hasFormat(const QString &format) const override;

protected:
    QVariant retrieveData(const QString &format, QMetaType preferredType) const override;

private:
    // The stored picture the others are made from; empty when none reads.
    QString sourcePicture() const;
    QStringList convertibleFormats() const;
    QByteArray converted(const QString &format) const;

    QStringList m_formats;
    QHash<QString, QByteArray> m_data;
};
