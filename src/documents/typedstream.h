#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <optional>

// The typedstream archive of a single string object, byte for byte as Mac OS X
// writes it with NSArchiver on Intel. There is no library for this format; the
// backup files need exactly one shape of it, so this is all of it we speak.
//
// Reading accepts what Macs of either byte order wrote for one string
// (NSString or NSMutableString), in any of the three integer widths, and gives
// no value for anything else; no length in the archive is trusted.
class TypedStream
{
public:
    static QByteArray archiveString(const QString &text);
    static std::optional<QString> unarchiveString(QByteArrayView archive);
};
