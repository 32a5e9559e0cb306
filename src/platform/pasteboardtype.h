#pragma once

#include <QString>

// The pasteboard type names the program's rules speak of. Desktop formats are
// mapped to and from them at the platform boundary.
namespace PasteboardType {

inline const QString String = QStringLiteral("NSStringPboardType");
inline const QString Utf8PlainText = QStringLiteral("public.utf8-plain-text");
inline const QString Tiff = QStringLiteral("public.tiff");
inline const QString Url = QStringLiteral("public.url");
inline const QString UrlPboard = QStringLiteral("NSURLPboardType");
// Declared, without data, on every state the program writes itself.
inline const QString Ignore = QStringLiteral("quillstash.ignore");
// Password managers mark secrets with one of these.
inline const QString Concealed = QStringLiteral("org.nspasteboard.ConcealedType");
inline const QString PasswordHint = QStringLiteral("x-kde-passwordManagerHint");

} // namespace PasteboardType
