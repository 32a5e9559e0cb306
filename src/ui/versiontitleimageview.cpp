#include "ui/versiontitleimageview.h"

#include "platform/imagenamed.h"
#include "platform/workspace.h"

#include <QGuiApplication>
#include <QMouseEvent>
#include <QPainter>
#include <QStyleHints>

namespace {

constexpr QSize pictureSize(360, 96);
constexpr int iconSide = 80;
constexpr int iconTextGap = 16;
constexpr qreal namePointSize = 34;

// The application's drawing beside its name, drawn at the screen's pixel ratio.
QPixmap titlePicture(qreal ratio)
{
    QPixmap picture(pictureSize * ratio);
    picture.setDevicePixelRatio(ratio);
    picture.fill(Qt::transparent);

    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const int iconTop = (pictureSize.height() - iconSide) / 2;
    painter.drawImage(QPoint(0, iconTop),
                      ImageNamed::imageNamed(QStringLiteral("quillstash"), QSize(iconSide, iconSide), ratio));

    QFont font(QStringLiteral("Lucida Grande"));
    font.setPointSizeF(namePointSize);
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(QGuiApplication::palette().color(QPalette::WindowText));
    const QRect nameRect(iconSide + iconTextGap, 0, pictureSize.width() - iconSide - iconTextGap,
                         pictureSize.height());
    painter.drawText(nameRect, Qt::AlignLeft | Qt::AlignVCenter, QStringLiteral("Quillstash"));
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
