#include "ui/WheelGuard.h"

#include <QApplication>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QLineEdit>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QSpinBox>
#include <QTest>
#include <QVBoxLayout>
#include <QWheelEvent>

namespace {
// One notch of a mouse wheel turned towards the person, over the middle of `widget`, as the
// window system delivers it.
void wheelDown(QWidget* widget) {
    const QPoint local = widget->rect().center();
    QWheelEvent wheel(local, widget->mapToGlobal(local), QPoint(), QPoint(0, -120), Qt::NoButton,
                      Qt::NoModifier, Qt::NoScrollPhase, false);
    QApplication::sendEvent(widget, &wheel);
}
} // namespace

// A wheel over a control without focus scrolls the page and changes no value.
class TestWheelGuard final : public QObject {
    Q_OBJECT

    QScrollArea* m_area = nullptr;
    QComboBox* m_picker = nullptr;
    QSpinBox* m_spin = nullptr;
    QDateTimeEdit* m_date = nullptr;
    QSlider* m_slider = nullptr;
    QLineEdit* m_field = nullptr;

private slots:
    void initTestCase() { WheelGuard::install(); }

    void init() {
        m_area = new QScrollArea;
        auto* page = new QWidget;
        auto* layout = new QVBoxLayout(page);
        m_picker = new QComboBox;
        m_picker->addItems(
            {QStringLiteral("Attention first"), QStringLiteral("Name"), QStringLiteral("Provider")});
        m_spin = new QSpinBox;
        m_spin->setValue(30);
        m_date = new QDateTimeEdit(QDateTime(QDate(2026, 11, 24), QTime(12, 0)));
        m_slider = new QSlider(Qt::Horizontal);
        m_slider->setValue(50);
        // Where the keyboard focus is while the wheel passes over the controls.
        m_field = new QLineEdit;
        layout->addWidget(m_field);
        layout->addWidget(m_picker);
        layout->addWidget(m_spin);
        layout->addWidget(m_date);
        layout->addWidget(m_slider);
        layout->addSpacing(3000);
        m_area->setWidget(page);
        m_area->resize(400, 300);
        m_area->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_area));
        m_field->setFocus();
        QTRY_VERIFY(m_field->hasFocus());
    }

    void cleanup() { delete m_area; }

    void withoutFocusTheWheelScrollsThePage() {
        QWidget* const controls[] = {m_picker, m_spin, m_date, m_slider};
        for (QWidget* control : controls) {
            const int scrolled = m_area->verticalScrollBar()->value();
            wheelDown(control);
            QVERIFY2(m_area->verticalScrollBar()->value() > scrolled, control->metaObject()->className());
            QVERIFY2(!control->hasFocus(), control->metaObject()->className());
            m_area->verticalScrollBar()->setValue(0);
        }
        QCOMPARE(m_picker->currentIndex(), 0);
        QCOMPARE(m_spin->value(), 30);
        QCOMPARE(m_date->dateTime(), QDateTime(QDate(2026, 11, 24), QTime(12, 0)));
        QCOMPARE(m_slider->value(), 50);
    }

    void withFocusTheControlSteps() {
        m_picker->setFocus();
        QTRY_VERIFY(m_picker->hasFocus());
        wheelDown(m_picker);
        QCOMPARE(m_picker->currentIndex(), 1);
        m_spin->setFocus();
        QTRY_VERIFY(m_spin->hasFocus());
        wheelDown(m_spin);
        QCOMPARE(m_spin->value(), 29);
    }

    void aScrollBarStillScrolls() {
        QScrollBar* bar = m_area->verticalScrollBar();
        wheelDown(bar);
        QVERIFY(bar->value() > 0);
    }
};

QTEST_MAIN(TestWheelGuard)
#include "tst_wheelguard.moc"
