#include "history/documentstate.h"

namespace {

QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith(u'/'))
        path.chop(1);
    const qsizetype slash = path.lastIndexOf(u'/');
    if (slash < 0 || path.size() == 1)
        return path;
    return path.mid(slash + 1);
}

} // namespace

void DocumentState::updateTitle()
{
    m_title = m_myPath.isEmpty() ? untitledTitle : lastPathComponent(m_myPath);
    if (m_eStatus != 0)
        m_title += u'*';
}
