#include "ui/SectionCard.h"

#include "ui/BlockParts.h"
#include "ui/Theme.h"

#include <QEvent>
#include <QVBoxLayout>

SectionCard::SectionCard(QWidget* parent)
    : QWidget(parent)
    , m_layout(new QVBoxLayout(this)) {
    m_layout->setContentsMargins(Theme::kSpaceL, Theme::kSpaceS, Theme::kSpaceL, Theme::kSpaceS);
    m_layout->setSpacing(Theme::kSpaceS);
}

void SectionCard::add(QWidget* row) {
    if (m_layout->count() > 0) {
        QWidget* line = BlockParts::separator(this);
        m_layout->addWidget(line);
        line->setVisible(!row->isHidden());
        m_lineAbove.insert(row, line);
        row->installEventFilter(this);
    }
    m_layout->addWidget(row);
}

bool SectionCard::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ShowToParent || event->type() == QEvent::HideToParent) {
        if (QWidget* line = m_lineAbove.value(watched)) {
            line->setVisible(event->type() == QEvent::ShowToParent);
        }
    }
    return QWidget::eventFilter(watched, event);
}

void SectionCard::paintEvent(QPaintEvent*) {
    Theme::paintCard(this);
}
