#pragma once

#include "ui/ElidedLabel.h"

#include <QAbstractButton>
#include <QAccessible>
#include <QLineEdit>
#include <QStringList>
#include <QTest>
#include <QWidget>

// What the widget tests read off real widgets: the texts a person sees, and the names a
// screen reader (or a tool driving the window) finds. Every GUI test finds a control the
// way a person does, by what it says (shown<T>), or by its object name with findChild.

// The shown widget of type T under `root` that says `label`: a button's visible text, or
// the name a screen reader reads for it; null when there is none.
template <typename T>
T* shown(const QWidget* root, const QString& label) {
    for (T* widget : root->findChildren<T*>()) {
        if (!widget->isVisibleTo(root)) {
            continue;
        }
        if (const auto* button = qobject_cast<const QAbstractButton*>(widget);
            button && button->text() == label) {
            return widget;
        }
        if (QAccessibleInterface* node = QAccessible::queryAccessibleInterface(widget);
            node && node->text(QAccessible::Name) == label) {
            return widget;
        }
    }
    return nullptr;
}

// The visible texts of the labels under `root`.
inline QStringList texts(const QWidget* root) {
    QStringList result;
    for (const ElidedLabel* label : root->findChildren<ElidedLabel*>()) {
        if (label->isVisibleTo(root)) {
            result.append(label->fullText());
        }
    }
    return result;
}

inline void collectAccessibleNames(QAccessibleInterface* node, bool shownOnly, QStringList& names,
                                   int depth = 0) {
    if (!node || depth > 60) {
        return;
    }
    if (!shownOnly || !node->state().invisible) {
        if (const QString name = node->text(QAccessible::Name); !name.isEmpty()) {
            names.append(name);
        }
    }
    for (int i = 0; i < node->childCount(); ++i) {
        collectAccessibleNames(node->child(i), shownOnly, names, depth + 1);
    }
}

// Every name the accessibility tree gives under `widget`.
inline QStringList accessibleNames(QWidget* widget) {
    QStringList names;
    collectAccessibleNames(QAccessible::queryAccessibleInterface(widget), false, names);
    return names;
}

// The same for what is shown: a panel that is hidden names nothing.
inline QStringList shownAccessibleNames(QWidget* widget) {
    QStringList names;
    collectAccessibleNames(QAccessible::queryAccessibleInterface(widget), true, names);
    return names;
}

// The accessible names the shown widgets under `root` were given, in the order of the tree.
inline QStringList childAccessibleNames(const QWidget& root) {
    QStringList names;
    for (const QWidget* child : root.findChildren<QWidget*>()) {
        if (child->isVisibleTo(&root) && !child->accessibleName().isEmpty()) {
            names.append(child->accessibleName());
        }
    }
    return names;
}

// Types into a field as a person does: what was there goes, key by key.
inline void type(QLineEdit* field, const QString& text) {
    QVERIFY(field);
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}

// Replaces a field's whole text the way assistive technology does (dictation, switch access,
// voice control): through the accessibility interface, without a keystroke.
inline void setByAssistiveTechnology(QWidget* field, const QString& text) {
    QVERIFY(field);
    QAccessibleInterface* node = QAccessible::queryAccessibleInterface(field);
    QAccessibleEditableTextInterface* editable = node ? node->editableTextInterface() : nullptr;
    QAccessibleTextInterface* shownText = node ? node->textInterface() : nullptr;
    QVERIFY(editable && shownText);
    if (editable && shownText) {
        editable->replaceText(0, shownText->characterCount(), text);
    }
}

// What a field shows, as a screen reader reads it back.
inline QString accessibleText(QWidget* field) {
    QAccessibleInterface* node = QAccessible::queryAccessibleInterface(field);
    QAccessibleTextInterface* shownText = node ? node->textInterface() : nullptr;
    return shownText ? shownText->text(0, shownText->characterCount()) : QString();
}
