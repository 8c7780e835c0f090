#include "ui/CardButton.h"

#include "ui/Theme.h"

#include <QPainter>
#include <QVBoxLayout>

CardButton::CardButton(QWidget* card, const QString& name, const QString& hint, QWidget* parent)
    : PressableButton(parent)
    , m_card(card) {
    setAccessibleName(name);
    setAccessibleDescription(hint);
    setToolTip(hint);
    setFocusPolicy(Qt::StrongFocus);
    setCursor(Qt::PointingHandCursor);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(kFocusRing, kFocusRing, kFocusRing, kFocusRing);
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
    QPainter painter(this);
    paintFocusRing(painter, QRectF(rect()).adjusted(1, 1, -1, -1), Theme::kRadiusCard + 1);
}
