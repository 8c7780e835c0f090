#include "views/widgets/SettingsView.h"

#include "core/Preferences.h"
#include "ui/BlockParts.h"
#include "ui/SectionCard.h"
#include "ui/Theme.h"
#include "ui/ToggleSwitch.h"
#include "views/SettingsContent.h"

#include <QComboBox>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QScrollArea>
#include <QVBoxLayout>

namespace {
using Ink = ElidedLabel::Ink;

// A label and value row of the support table and the About block.
QWidget* pair(const QString& label, const QString& value, QWidget* parent) {
    auto* row = new QWidget(parent);
    auto* layout = BlockParts::row(Theme::kSpaceL);
    row->setLayout(layout);
    layout->setContentsMargins(0, Theme::kSpaceXS, 0, Theme::kSpaceXS);
    layout->addWidget(BlockParts::text(label, Theme::kBody, QFont::Normal, Ink::primary, row), 1);
    ElidedLabel* shown =
        BlockParts::text(value, Theme::kBody, QFont::Normal, Ink::secondary, row, Tone::muted);
    shown->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    layout->addWidget(shown, 1);
    return row;
}

ElidedLabel* note(const QString& text, QWidget* parent) {
    return BlockParts::text(text, Theme::kFootnote, QFont::Normal, Ink::secondary, parent, Tone::muted);
}
} // namespace

SettingsView::SettingsView(Preferences* preferences, QWidget* parent)
    : QWidget(parent, Qt::Window)
    , m_preferences(preferences) {
    const SettingsContent content = SettingsContent::make();
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(content.windowTitle);
    resize(SettingsContent::kWidth, SettingsContent::kHeight);
    setMinimumWidth(420);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    auto* scroll = new QScrollArea(this);
    scroll->setAccessibleName(content.windowTitle);
    scroll->setWidgetResizable(true);
    scroll->setFrameShape(QFrame::NoFrame);
    outer->addWidget(scroll);
    auto* page = new QWidget(scroll);
    page->setObjectName(QStringLiteral("settingsPage"));
    scroll->setWidget(page);
    auto* layout = new QVBoxLayout(page);
    layout->setContentsMargins(Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL, Theme::kSpaceXL);
    layout->setSpacing(Theme::kSpaceS);

    const auto section = [&](const QString& title) { return addSection(layout, title, page); };

    SectionCard* demo = section(content.demoSection);
    m_sampleData = new ToggleSwitch(content.sampleData.title, demo);
    m_sampleData->setObjectName(QStringLiteral("useSampleDataByDefault"));
    demo->add(m_sampleData);
    demo->add(note(content.demoNote, demo));

    buildRefresh(section(content.refreshSection), content);

    SectionCard* support = section(content.supportSection);
    for (const auto& [label, value] : content.support) {
        support->add(pair(label, value, support));
    }
    for (const QString& text : content.supportNotes) {
        support->add(note(text, support));
    }

    buildAbout(section(content.aboutSection), content);
    layout->addStretch(1);

    // Each control writes through at once; no save step.
    connect(m_sampleData, &ToggleSwitch::toggled, m_preferences, &Preferences::setUseSampleDataByDefault);
    connect(m_autoRefresh, &ToggleSwitch::toggled, m_preferences, &Preferences::setAutoRefreshEnabled);
    connect(m_notifications, &ToggleSwitch::toggled, m_preferences,
            &Preferences::setThresholdNotificationsEnabled);
    connect(m_interval, &QComboBox::activated, this,
            [this](int index) { m_preferences->setAutoRefreshMinutes(m_interval->itemData(index).toInt()); });
    connect(m_preferences, &Preferences::changed, this, &SettingsView::sync);
    sync();
}

// A section's heading and its card, below the sections before it.
SectionCard* SettingsView::addSection(QVBoxLayout* layout, const QString& title, QWidget* page) {
    if (layout->count() > 0) {
        layout->addSpacing(Theme::kSpaceL);
    }
    layout->addWidget(BlockParts::text(title, Theme::kHeadline, QFont::DemiBold, Ink::primary, page));
    auto* card = new SectionCard(page);
    layout->addWidget(card);
    return card;
}

// Automatic refresh, its interval and the usage notifications.
void SettingsView::buildRefresh(SectionCard* refresh, const SettingsContent& content) {
    m_autoRefresh = new ToggleSwitch(content.autoRefresh.title, refresh);
    m_autoRefresh->setObjectName(QStringLiteral("autoRefreshEnabled"));
    refresh->add(m_autoRefresh);
    m_intervalRow = new QWidget(refresh);
    auto* intervalLayout = BlockParts::row(Theme::kSpaceL);
    m_intervalRow->setLayout(intervalLayout);
    intervalLayout->addWidget(
        BlockParts::text(content.intervalTitle, Theme::kBody, QFont::Normal, Ink::primary, m_intervalRow), 1);
    m_interval = new QComboBox(m_intervalRow);
    m_interval->setObjectName(QStringLiteral("autoRefreshMinutes"));
    m_interval->setAccessibleName(content.intervalTitle);
    for (const SettingsContent::Interval& interval : content.intervals) {
        m_interval->addItem(interval.title, interval.minutes);
    }
    intervalLayout->addWidget(m_interval);
    refresh->add(m_intervalRow);
    refresh->add(note(content.refreshNote, refresh));
    m_notifications = new ToggleSwitch(content.notifications.title, refresh);
    m_notifications->setObjectName(QStringLiteral("thresholdNotificationsEnabled"));
    refresh->add(m_notifications);
    refresh->add(note(content.notificationsNote, refresh));
}

// What the application is, and the company's page.
void SettingsView::buildAbout(SectionCard* about, const SettingsContent& content) {
    for (const auto& [label, value] : content.about) {
        about->add(pair(label, value, about));
    }
    m_link = new QLabel(about);
    m_link->setObjectName(QStringLiteral("companyLink"));
    m_link->setText(QStringLiteral("<a href=\"%1\">%2</a>").arg(content.link.toString(), content.linkTitle));
    m_link->setTextFormat(Qt::RichText);
    m_link->setAccessibleName(content.linkTitle);
    m_link->setTextInteractionFlags(Qt::TextBrowserInteraction);
    m_link->setOpenExternalLinks(false);
    connect(m_link, &QLabel::linkActivated, this,
            [](const QString& url) { QDesktopServices::openUrl(QUrl(url)); });
    about->add(m_link);
    about->add(note(content.aboutNote, about));
}

void SettingsView::sync() {
    m_sampleData->setChecked(m_preferences->useSampleDataByDefault());
    m_autoRefresh->setChecked(m_preferences->autoRefreshEnabled());
    m_notifications->setChecked(m_preferences->thresholdNotificationsEnabled());
    // The picker shows only while automatic refresh is on; its value stays stored.
    m_intervalRow->setVisible(m_preferences->autoRefreshEnabled());
    m_interval->setCurrentIndex(
        static_cast<int>(SettingsContent::intervalIndex(m_preferences->autoRefreshMinutes())));
}

void SettingsView::keyPressEvent(QKeyEvent* event) {
    // Escape closes it, as it closes the sheets.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        close();
        return;
    }
    QWidget::keyPressEvent(event);
}
