#pragma once

#include "model/AIProvider.h"

#include <QPixmap>
#include <QWidget>

// A provider's logo in a square: the bundled mark, taking the text colour around it
// (xAI's keeps its own colours), or the provider's symbol, inset, when no mark loads.
// Decoration beside the provider's name, hidden from assistive technology, unless it is
// given an accessible name where it stands alone.
class ProviderLogoWidget final : public QWidget {
    Q_OBJECT

public:
    explicit ProviderLogoWidget(AIProvider provider, int size = 24, QWidget* parent = nullptr);

    // The bundled mark's resource; empty when none loads.
    static QString logoResource(AIProvider provider);
    // The logo drawn at `size` device-independent pixels for a device pixel ratio, in
    // `ink` where the mark takes the surrounding colour; scaled once and kept in the
    // pixmap cache, so painting it is a copy.
    static QPixmap logo(AIProvider provider, int size, const QColor& ink, qreal ratio);
    // Whether the mark takes the surrounding colour.
    static bool isTemplate(AIProvider provider) { return provider != AIProvider::xAI; }

    QSize sizeHint() const override { return QSize(m_size, m_size); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    AIProvider m_provider;
    int m_size;
};
