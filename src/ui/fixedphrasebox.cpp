#include "ui/fixedphrasebox.h"

#include "settings/applicationregistries.h"

#include <QAbstractButton>
#include <QFontMetricsF>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>

#include <algorithm>

namespace {

constexpr int firstPhrase = 1;
constexpr int lastPhrase = 9;
constexpr qreal largestNumberPointSize = 22;

// The history table's key stamp: the same face and the same faint grey, so
// that the user recognises a hot key label wherever it is shown.
QFont numberFont()
{
    QFont font(QStringLiteral("Futura Medium Italic"));
    font.setItalic(true);
    font.setPointSizeF(largestNumberPointSize);
    return font;
}

const QColor &numberColor()
{
    static const QColor color = QColor::fromRgbF(0.2f, 0.2f, 0.2f, 0.5f);
    return color;
}

QString nilIfEmpty(const QString &text)
{
    return text.isEmpty() ? QString() : text;
}

} // namespace

FixedPhraseBox::FixedPhraseBox(QWidget *parent)
    : QGroupBox(parent)
{
}

void FixedPhraseBox::awakeFromNib(ApplicationRegistries &registries, PreferencesWindow *window)
{
    m_registries = &registries;
    prefWindow = window;
    titleFP = findChild<QLineEdit *>(QStringLiteral("titleFP"));
    contentFP = findChild<QPlainTextEdit *>(QStringLiteral("contentFP"));
    numberFP = findChild<QLabel *>(QStringLiteral("numberFP"));
    Q_ASSERT(titleFP && contentFP && numberFP);
    const auto *leftButton = findChild<QAbstractButton *>(QStringLiteral("leftButton"));
    const auto *rightButton = findChild<QAbstractButton *>(QStringLiteral("rightButton"));
    Q_ASSERT(leftButton && rightButton);
    connect(leftButton, &QAbstractButton::clicked, this, [this] { left(); });
    connect(rightButton, &QAbstractButton::clicked, this, [this] { right(); });

    QPalette palette = numberFP->palette();
    palette.setColor(QPalette::WindowText, numberColor());
    numberFP->setPalette(palette);

    index = firstPhrase;
    buildStr(firstPhrase);
}

void FixedPhraseBox::buildStr(int n)
{
    numberFP->setText(QStringLiteral("%1%2").arg(constStringFixPhrase).arg(n));
    fitNumberLabel();
}

void FixedPhraseBox::syncText()
{
    titleFP->setText(m_registries->fixedPhraseTitle(index));
    contentFP->setPlainText(m_registries->fixedPhraseContent(index));
}

void FixedPhraseBox::commitValue()
{
    m_registries->setFixedPhraseTitle(nilIfEmpty(titleFP->text()), index);
    m_registries->setFixedPhrasContent(nilIfEmpty(contentFP->toPlainText()), index);
}

void FixedPhraseBox::left(QObject *sender)
{
    Q_UNUSED(sender);
    commitValue();
    if (index > firstPhrase)
        --index;
    buildStr(index);
    syncText();
}

void FixedPhraseBox::right(QObject *sender)
{
    Q_UNUSED(sender);
    commitValue();
    if (index < lastPhrase)
        ++index;
    buildStr(index);
    syncText();
}

void FixedPhraseBox::paintEvent(QPaintEvent *event)
{
    if (index != postIndex) {
        syncText();
        postIndex = index;
    }
    QGroupBox::paintEvent(event);
}

void FixedPhraseBox::resizeEvent(QResizeEvent *event)
{
    QGroupBox::resizeEvent(event);
    if (numberFP)
        fitNumberLabel();
}

void FixedPhraseBox::fitNumberLabel()
{
    // The largest size up to the stamp's own at which the label fits its
    // place; the bounding rectangle counts the italic overhang.
    const QRectF room = numberFP->contentsRect();
    const QString label = numberFP->text();
    QFont font = numberFont();
    for (qreal size = largestNumberPointSize; size > 6; size -= 1) {
        font.setPointSizeF(size);
        const QFontMetricsF metrics(font);
        const qreal width = std::max(metrics.boundingRect(label).right(), metrics.horizontalAdvance(label));
        if (width <= room.width() && metrics.height() <= room.height())
            break;
    }
    numberFP->setFont(font);
}
