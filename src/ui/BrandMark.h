#pragma once

#include <QWidget>

// The product's mark: three rising tally bars on an accent tile.
class BrandMark final : public QWidget {
    Q_OBJECT

public:
    explicit BrandMark(int size, QWidget* parent = nullptr);

    QSize sizeHint() const override { return QSize(m_size, m_size); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    int m_size;
};
