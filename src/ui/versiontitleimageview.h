#pragma once

#include <QLabel>
#include <QPointF>
#include <QUrl>

class Workspace;

// The about box's title picture. A double click opens a web page chosen by
// the view's "tag" property: 30000 the program's home page, 30001 the page of
// the update framework's project; any other tag opens nothing.
//
// Only the release that ends the second click of a double click opens the
// page: a single click does nothing, and a triple click opens it once.
class VersionTitleImageView : public QLabel
{
    Q_OBJECT

public:
    static constexpr int homePageTag = 30000;
    static constexpr int updaterPageTag = 30001;
    static constexpr auto homePageURL = "https://quillstash.org/";
    static constexpr auto updaterPageURL = "https://sparkle-project.org/";

    explicit VersionTitleImageView(Workspace &workspace, QWidget *parent = nullptr);

    // The page for a tag, or an empty address.
    static QUrl pageForTag(int tag);

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void countPress(const QMouseEvent *event);

    Workspace &m_workspace;
    int m_clickCount = 0;
    quint64 m_lastPressTime = 0;
    QPointF m_lastPressPosition;
};
