#pragma once

#include "ui/ElidedLabel.h"

#include <QAccessible>
#include <QLineEdit>
#include <QStringList>
#include <QTest>
#include <QWidget>

// What the widget tests read off real widgets: the texts a person sees, and the names a
// screen reader (or a tool driving the window) finds.

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

// Types into a field as a person does: what was there goes, key by key.
inline void type(QLineEdit* field, const QString& text) {
    QVERIFY(field);
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClicks(field, text);
}
