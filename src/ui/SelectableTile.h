#pragma once

#include "model/AIProvider.h"
#include "views/Badge.h"

#include "ui/PressableButton.h"

#include <optional>

// A tile to choose one of several: the provider's logo, a title and an optional second
// line, and while chosen an accent ring and a check mark. Its accessible name is its
// title; it is checkable, so a screen reader says which one is chosen.
class SelectableTile final : public PressableButton {
    Q_OBJECT

public:
    SelectableTile(AIProvider logo, const QString& title, const QString& subtitle, QWidget* parent = nullptr);

    void setContent(AIProvider logo, const QString& title, const QString& subtitle);
    // A symbol in the accent colour instead of the logo.
    void setSymbol(const QString& symbol);
    // A small tag after the title.
    void setBadge(const QString& badge);
    // An empty circle where the check mark goes while not chosen, as radio choices have.
    void setShowsEmptyCircle(bool shows);
    void setSelected(bool selected);
    bool isSelected() const noexcept { return m_selected; }
    const QString& subtitle() const noexcept { return m_subtitle; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool hasHeightForWidth() const override { return true; }
    int heightForWidth(int width) const override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void nextCheckState() override {}

private:
    // The badge as a capsule without a symbol, in the accent tone.
    Badge tag() const;
    // The second line wraps rather than being cut.
    static constexpr int kSecondLineFlags = Qt::TextWordWrap;
    // Padding, logo, check mark and the gaps between them.
    static int chromeWidth();
    int titleWidth() const;
    int secondLineHeight(int room) const;

    AIProvider m_logo;
    QString m_symbol;
    QString m_badge;
    bool m_emptyCircle = false;
    QString m_subtitle;
    bool m_selected = false;
};
