#include "ui/versiontitleimageview.h"

#include "platform/imagenamed.h"
#include "platform/workspace.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>

#include <algorithm>

namespace {

constexpr int pictureHeight = 96;
constexpr int iconSide = 80;
constexpr int iconTextGap = 16;
constexpr int trailingMargin = 8;
constexpr qreal namePointSize = 34;

// The application's drawing beside its name, drawn at the screen's pixel
// ratio, as wide as the name needs in the font the desktop matched.
QPixmap titlePicture(qreal ratio)
{
    const QString name = QStringLiteral("Quillstash");
    QFont font(QStringLiteral("Lucida Grande"));
    font.setPointSizeF(namePointSize);
    font.setBold(true);
    const QFontMetrics metrics(font);
    const int nameWidth = std::max(metrics.horizontalAdvance(name), metrics.boundingRect(name).right());
    const QSize size(iconSide + iconTextGap + nameWidth + trailingMargin, pictureHeight);

    QPixmap picture(size * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.drawImage(QPoint(0, (pictureHeight - iconSide) / 2),
                      ImageNamed::imageNamed(QStringLiteral("quillstash"), QSize(iconSide, iconSide), ratio));
    painter.setFont(font);
    painter.setPen(QGuiApplication::palette().color(QPalette::WindowText));
    painter.drawText(QRect(iconSide + iconTextGap, 0, nameWidth + trailingMargin, pictureHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, name);
    return picture;
}

} // namespace

VersionTitleImageView::VersionTitleImageView(Workspace &workspace, QWidget *parent)
    : QLabel(parent)
    , m_workspace(workspace)
{
    setPixmap(titlePicture(qApp->devicePixelRatio()));
    setAlignment(Qt::AlignCenter);
    setToolTip(tr("Double-click to open the home page"));
}

QUrl VersionTitleImageView::pageForTag(int tag)
{
    switch (tag) {
    case homePageTag:
        return QUrl(QString::fromLatin1(homePageURL));
    case updaterPageTag:
        return QUrl(QString::fromLatin1(updaterPageURL));
    default:
        return QUrl();
    }
}

// Qt counts clicks only up to a double click and tells no count on release,
// so the view counts presses itself by the desktop's double-click rules:
// a press close enough in time and place to the previous one continues the series.
void VersionTitleImageView::countPress(const QMouseEvent *event)
{
    const QStyleHints *hints = QGuiApplication::styleHints();
    const quint64 now = event->timestamp();
    const QPointF moved = event->position() - m_lastPressPosition;
    const bool continues = m_clickCount > 0 && now - m_lastPressTime < quint64(hints->mouseDoubleClickInterval())
        && qAbs(moved.x()) <= hints->mouseDoubleClickDistance() && qAbs(moved.y()) <= hints->mouseDoubleClickDistance();
    m_clickCount = continues ? m_clickCount + 1 : 1;
    m_lastPressTime = now;
    m_lastPressPosition = event->position();
}

void VersionTitleImageView::mousePressEvent(QMouseEvent *event)
{
    countPress(event);
}

void VersionTitleImageView::mouseDoubleClickEvent(QMouseEvent *event)
{
    countPress(event);
}

void VersionTitleImageView::mouseReleaseEvent(QMouseEvent *event)
{
    Q_UNUSED(event);
    const QUrl page = pageForTag(property("tag").toInt());
    if (page.isEmpty())
        return;
    if (m_clickCount == 2)
        m_workspace.openURL(page);
}
