#pragma once

#include <QHash>
#include <QWidget>

class QVBoxLayout;

// A card holding a section's rows, separated by hairlines.
class SectionCard final : public QWidget {
    Q_OBJECT

public:
    explicit SectionCard(QWidget* parent = nullptr);

    // Adds a row below a hairline (none above the first); the hairline shows and hides
    // with its row.
    void add(QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    QVBoxLayout* m_layout;
    QHash<QObject*, QWidget*> m_lineAbove;
};
