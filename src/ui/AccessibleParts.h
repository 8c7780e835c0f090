#pragma once

class QToolButton;

// How the kit's own controls read to assistive technology where Qt's reading of the widget
// they are made of says the wrong thing: a segment is a radio button (Qt reads a checkable
// tool button as a check box), and a provider's logo without a name of its own is decoration
// beside the provider's name. Installed once, on first use.
class AccessibleParts final {
public:
    AccessibleParts() = delete;

    static void install();
    // Makes `button` read as a segment; before anything asks for its accessible interface.
    static void markSegment(QToolButton* button);
};
