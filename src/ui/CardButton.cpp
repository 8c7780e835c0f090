#include "ui/CardButton.h"

#include "ui/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace {
constexpr int kRing = 2;
}

CardButton::CardButton(QWidget* card, const QString& name, const QString& hint, QWidget* parent)
    : QAbstractButton(parent)
    , m_card(card) {
    setAccessibleName(name);
    setAccessibleDescription(hint);
    setToolTip(hint);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kRing, kRing, kRing, kRing);
    layout->addWidget(m_card);
    QSizePolicy policy(QSizePolicy::Preferred, QSizePolicy::Preferred);
    policy.setHeightForWidth(m_card->hasHeightForWidth());
    setSizePolicy(policy);
}

void CardButton::setCard(QWidget* card) {
    layout()->replaceWidget(m_card, card);
    delete m_card;
    m_card = card;
    m_card->show();
}

QSize CardButton::sizeHint() const {
    return layout()->sizeHint();
}

QSize CardButton::minimumSizeHint() const {
    return layout()->minimumSize();
}

bool CardButton::hasHeightForWidth() const {
    return layout()->hasHeightForWidth();
}

int CardButton::heightForWidth(int width) const {
    return layout()->heightForWidth(width);
}

void CardButton::paintEvent(QPaintEvent*) {
    if (!hasFocus()) {
        return;
    }
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(Theme::colors(Tone::accent, Theme::appearance(palette())).foreground, kRing));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF(rect()).adjusted(1, 1, -1, -1), Theme::kRadiusCard + 1,
                            Theme::kRadiusCard + 1);
}

void CardButton::keyPressEvent(QKeyEvent* event) {
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}
