#include "platform/x11/xdgloginitems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLoggingCategory>
#include <QSaveFile>
#include <QStandardPaths>

#include <algorithm>

Q_LOGGING_CATEGORY(lcLoginItems, "quillstash.loginitems", QtWarningMsg)

namespace {

constexpr auto entryBaseName = "quillstash";
constexpr auto entrySuffix = ".desktop";
// An autostart entry is a few hundred bytes; anything far larger is not one.
constexpr qint64 maxEntrySize = 64 * 1024;

// Undoes the escapes every string value of a desktop entry may hold.
QString unescapeValue(const QString &value)
{
    QString out;
    out.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const QChar c = value.at(i);
        if (c != u'\\' || i + 1 == value.size()) {
            out.append(c);
            continue;
        }
        const QChar next = value.at(++i);
        switch (next.unicode()) {
        case 's': out.append(u' '); break;
        case 'n': out.append(u'\n'); break;
        case 't': out.append(u'\t'); break;
        case 'r': out.append(u'\r'); break;
        case '\\': out.append(u'\\'); break;
        default: out.append(u'\\').append(next); break;
        }
    }
    return out;
}

QString escapeValue(const QString &value)
{
    QString out = value;
    out.replace(u'\\', QStringLiteral("\\\\"));
    out.replace(u'\n', QStringLiteral("\\n"));
    out.replace(u'\t', QStringLiteral("\\t"));
    out.replace(u'\r', QStringLiteral("\\r"));
    return out;
}

// The first argument of an Exec value (already unescaped as a string),
// following the quoting rules of the desktop entry specification.
QString firstExecArgument(const QString &exec)
{
    QString arg;
    qsizetype i = 0;
    while (i < exec.size() && exec.at(i).isSpace())
        ++i;
    if (i < exec.size() && exec.at(i) == u'"') {
        for (++i; i < exec.size(); ++i) {
            const QChar c = exec.at(i);
            if (c == u'"')
                return arg;
            if (c == u'\\' && i + 1 < exec.size()) {
                const QChar next = exec.at(i + 1);
                if (next == u'"' || next == u'`' || next == u'$' || next == u'\\') {
                    arg.append(next);
                    ++i;
                    continue;
                }
            }
            arg.append(c);
        }
        return {}; // unterminated quote: not a valid command line
    }
    for (; i < exec.size() && !exec.at(i).isSpace(); ++i)
        arg.append(exec.at(i));
    return arg;
}

bool needsQuoting(const QString &arg)
{
    static const QString reserved = QStringLiteral(" \t\n\"'\\><~|&;$*?#()`");
    return std::any_of(arg.begin(), arg.end(), [](QChar c) { return reserved.contains(c); });
}

QString quoteExecArgument(const QString &arg)
{
    QString quoted = arg;
    quoted.replace(u'%', QStringLiteral("%%"));
    if (!needsQuoting(quoted))
        return quoted;
    QString out = QStringLiteral("\"");
    for (const QChar c : quoted) {
        if (c == u'"' || c == u'`' || c == u'$' || c == u'\\')
            out.append(u'\\');
        out.append(c);
    }
    out.append(u'"');
    return out;
}

QUrl resolveProgram(const QString &program)
{
    if (program.isEmpty())
        return {};
    QString path = program;
    if (!program.contains(u'/'))
        path = QStandardPaths::findExecutable(program);
    else if (!QFileInfo(program).isAbsolute())
        return {};
    const QString canonical = QFileInfo(path).canonicalFilePath();
    if (canonical.isEmpty())
        return {};
    return QUrl::fromLocalFile(canonical);
}

QByteArray readEntry(const QString &path)
{
    QFile file(path);
    if (file.size() > maxEntrySize || !file.open(QIODevice::ReadOnly))
        return {};
    return file.read(maxEntrySize);
}

} // namespace

XdgLoginItems::XdgLoginItems()
    : XdgLoginItems(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
                    + QStringLiteral("/autostart"))
{
}

XdgLoginItems::XdgLoginItems(const QString &folder) : m_folder(folder) {}

QUrl XdgLoginItems::resolveDesktopEntry(const QByteArray &contents)
{
    bool inMainGroup = false;
    QString exec;
    bool hidden = false;
    const QList<QByteArray> lines = contents.split('\n');
    for (const QByteArray &rawLine : lines) {
        const QString line = QString::fromUtf8(rawLine).trimmed();
        if (line.isEmpty() || line.startsWith(u'#'))
            continue;
        if (line.startsWith(u'[')) {
            inMainGroup = line == QLatin1String("[Desktop Entry]");
            continue;
        }
        if (!inMainGroup)
            continue;
        const qsizetype eq = line.indexOf(u'=');
        if (eq < 0)
            continue;
        const QString key = line.left(eq).trimmed();
        const QString value = line.mid(eq + 1).trimmed();
        if (key == QLatin1String("Exec"))
            exec = unescapeValue(value);
        else if (key == QLatin1String("Hidden"))
            hidden = value == QLatin1String("true");
    }
    if (hidden)
        return {};
    QString program = firstExecArgument(exec);
    program.replace(QStringLiteral("%%"), QStringLiteral("%"));
    return resolveProgram(program);
}

std::optional<QList<LoginItems::Item>> XdgLoginItems::snapshot() const
{
    const QFileInfo folderInfo(m_folder);
    if (!folderInfo.exists())
        return QList<Item>{};
    if (!folderInfo.isDir() || !folderInfo.isReadable() || !folderInfo.isExecutable()) {
        qCDebug(lcLoginItems) << "Cannot read the autostart folder" << m_folder;
        return std::nullopt;
    }

    QStringList names = QDir(m_folder).entryList({QStringLiteral("*.desktop")},
                                                 QDir::Files | QDir::Readable | QDir::Hidden);
    // Code-point order, the same for every locale.
    std::sort(names.begin(), names.end(),
              [](const QString &a, const QString &b) { return a.compare(b) < 0; });

    QList<Item> items;
    items.reserve(names.size());
    for (const QString &name : std::as_const(names))
        items.append({name, resolveDesktopEntry(readEntry(m_folder + u'/' + name))});
    return items;
}

void XdgLoginItems::insertAtTop(const QUrl &url)
{
    if (!QDir().mkpath(m_folder)) {
        qCDebug(lcLoginItems) << "Cannot create the autostart folder" << m_folder;
        return;
    }

    const QString base = QString::fromLatin1(entryBaseName);
    const QString suffix = QString::fromLatin1(entrySuffix);
    QString name = base + suffix;
    for (int n = 2; QFileInfo::exists(m_folder + u'/' + name)
                    && resolveDesktopEntry(readEntry(m_folder + u'/' + name)) != url;
         ++n)
        name = base + u'-' + QString::number(n) + suffix;

    const QString exec = escapeValue(quoteExecArgument(url.toLocalFile()));
    const QString entry = QStringLiteral("[Desktop Entry]\n"
                                         "Type=Application\n"
                                         "Name=Quillstash\n"
                                         "Comment=Keeps a history of the clipboard\n"
                                         "Exec=%1\n"
                                         "Icon=quillstash\n"
                                         "Terminal=false\n"
                                         "X-GNOME-Autostart-enabled=true\n")
                              .arg(exec);

    QSaveFile file(m_folder + u'/' + name);
    if (!file.open(QIODevice::WriteOnly) || file.write(entry.toUtf8()) < 0 || !file.commit())
        qCDebug(lcLoginItems) << "Cannot write the autostart entry" << file.fileName()
                              << file.errorString();
}

void XdgLoginItems::remove(const Item &item)
{
    // An id is a bare file name; refuse anything that would leave the folder.
    if (item.id.isEmpty() || item.id.contains(u'/'))
        return;
    if (!QFile::remove(m_folder + u'/' + item.id))
        qCDebug(lcLoginItems) << "Cannot remove the autostart entry" << item.id;
}
