#pragma once

#include "ui/ElidedLabel.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLabel>
#include <QSet>
#include <QStringList>
#include <QWidget>

// Walks what a screen reader meets in a window, from the window down, and lists what would
// leave its user stranded: a control with no name, two neighbouring controls it cannot
// tell apart, a text on screen that no accessible object says.
class AccessibilityAudit final {
public:
    int objects = 0;
    QStringList problems;

    void check(const QString& screen, QWidget* window) {
        QSet<QString> carried;
        const int before = objects;
        walk(screen, QAccessible::queryAccessibleInterface(window), carried, 0);
        qInfo("%s: %d accessible objects", qPrintable(screen), objects - before);
        for (const QWidget* widget : window->findChildren<QWidget*>()) {
            if (!widget->isVisibleTo(window)) {
                continue;
            }
            const QString shown = shownText(widget);
            if (!shown.trimmed().isEmpty() && !isCarried(shown, carried)) {
                problems.append(screen + QStringLiteral(": the text \u201C") + shown +
                                QStringLiteral("\u201D on screen is said by no accessible object"));
            }
        }
    }

private:
    static bool isActionable(QAccessibleInterface* node) {
        // What takes the keyboard focus is met by its name, too.
        if (node->state().focusable) {
            return true;
        }
        switch (node->role()) {
        case QAccessible::Button:
        case QAccessible::CheckBox:
        case QAccessible::RadioButton:
        case QAccessible::ComboBox:
        case QAccessible::SpinBox:
        case QAccessible::Slider:
        case QAccessible::EditableText:
        case QAccessible::Link:
        case QAccessible::PageTab:
        case QAccessible::ButtonMenu:
        case QAccessible::ButtonDropDown:
        case QAccessible::MenuItem:
            return true;
        default:
            break;
        }
        if (QAccessibleActionInterface* actions = node->actionInterface()) {
            for (const QString& action : actions->actionNames()) {
                if (action == QAccessibleActionInterface::pressAction() ||
                    action == QAccessibleActionInterface::toggleAction() ||
                    action == QAccessibleActionInterface::showMenuAction()) {
                    return true;
                }
            }
        }
        return false;
    }

    static QString describe(QAccessibleInterface* node) {
        QString what = QString::number(node->role(), 16);
        if (QObject* object = node->object()) {
            what = QString::fromLatin1(object->metaObject()->className()) + u' ' + object->objectName();
        }
        return what.trimmed();
    }

    void walk(const QString& screen, QAccessibleInterface* node, QSet<QString>& carried, int depth) {
        if (!node || depth > 80 || node->state().invisible) {
            return;
        }
        ++objects;
        for (const QAccessible::Text kind :
             {QAccessible::Name, QAccessible::Description, QAccessible::Value}) {
            if (const QString text = node->text(kind); !text.isEmpty()) {
                carried.insert(text);
            }
        }
        if (QAccessibleTextInterface* text = node->textInterface()) {
            carried.insert(text->text(0, text->characterCount()));
        }
        if (isActionable(node) && node->text(QAccessible::Name).trimmed().isEmpty()) {
            problems.append(screen + QStringLiteral(": an unnamed control (") + describe(node) + u')');
        }
        QHash<QString, int> seen;
        for (int i = 0; i < node->childCount(); ++i) {
            QAccessibleInterface* child = node->child(i);
            if (!child || child->state().invisible || !isActionable(child)) {
                continue;
            }
            const QString key =
                child->text(QAccessible::Name) + u'\n' + child->text(QAccessible::Description);
            if (!child->text(QAccessible::Name).isEmpty() && ++seen[key] == 2) {
                problems.append(screen + QStringLiteral(": two controls side by side both say \u201C") +
                                child->text(QAccessible::Name) +
                                QStringLiteral("\u201D with nothing to tell them apart"));
            }
        }
        for (int i = 0; i < node->childCount(); ++i) {
            walk(screen, node->child(i), carried, depth + 1);
        }
    }

    // The text a widget shows by itself: a label's, a button's.
    static QString shownText(const QWidget* widget) {
        if (const auto* label = qobject_cast<const ElidedLabel*>(widget)) {
            return label->fullText();
        }
        if (const auto* label = qobject_cast<const QLabel*>(widget)) {
            return label->textFormat() == Qt::RichText ? QString() : label->text();
        }
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget)) {
            return QString(button->text()).remove(u'&');
        }
        return QString();
    }

    static bool isCarried(const QString& shown, const QSet<QString>& carried) {
        if (carried.contains(shown)) {
            return true;
        }
        for (const QString& text : carried) {
            if (text.contains(shown)) {
                return true;
            }
        }
        return false;
    }
};
