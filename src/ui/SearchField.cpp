#include "ui/SearchField.h"

#include "ui/SymbolIcon.h"
#include "ui/Theme.h"

#include <QAction>
#include <QPainter>
#include <QStyle>
#include <QStyleOptionFrame>

namespace {
constexpr int kSymbolSize = 14;
constexpr int kSymbolGap = 6;

QPixmap symbol(const QString& name, const QWidget* field) {
    return SymbolIcon::pixmap(name, Theme::secondaryText(Theme::appearance(field->palette())), kSymbolSize,
                              field->devicePixelRatioF());
}
} // namespace

SearchField::SearchField(const QString& prompt, QWidget* parent)
    : QLineEdit(parent) {
    setPlaceholderText(prompt);
    setAccessibleName(prompt);
    setTextMargins(kSymbolSize + kSymbolGap, 0, 0, 0);
    // Our own clear button in the bundled symbols: Qt's would look its icon up in the
    // desktop's icon theme, which costs a walk through the theme folders at start.
    // Its icon is drawn when it first shows, with the first letter typed.
    m_clear = addAction(QIcon(), QLineEdit::TrailingPosition);
    m_clear->setText(QStringLiteral("Clear search"));
    m_clear->setVisible(false);
    connect(m_clear, &QAction::triggered, this, &QLineEdit::clear);
    connect(this, &QLineEdit::textChanged, this, [this](const QString& text) {
        if (!text.isEmpty() && m_clear->icon().isNull()) {
            m_clear->setIcon(SymbolIcon::icon(QStringLiteral("xmark.circle.fill"), kSymbolSize,
                                              [] { return Theme::secondaryText(Theme::current()); }));
        }
        m_clear->setVisible(!text.isEmpty());
    });
}

void SearchField::paintEvent(QPaintEvent* event) {
    QLineEdit::paintEvent(event);
    QStyleOptionFrame option;
    initStyleOption(&option);
    const QRect contents = style()->subElementRect(QStyle::SE_LineEditContents, &option, this);
    QPainter painter(this);
    const QRect place(contents.left(), contents.center().y() - kSymbolSize / 2 + 1, kSymbolSize, kSymbolSize);
    painter.drawPixmap(place, symbol(QStringLiteral("magnifyingglass"), this));
}
