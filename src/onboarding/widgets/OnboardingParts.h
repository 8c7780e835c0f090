#pragma once

#include "model/AIProvider.h"
#include "onboarding/OnboardingPage.h"
#include "ui/ElidedLabel.h"
#include "views/Tone.h"

#include <QString>

#include <optional>

class QVBoxLayout;
class QWidget;

// The small pieces every page of the guided flow is made of.
namespace OnboardingParts {
ElidedLabel* heading(const QString& text, QWidget* parent);
ElidedLabel* paragraph(const QString& text, QWidget* parent);
// A symbol and a line of text beside it; the text is the child named "message".
QWidget* symbolLine(const QString& symbol, const QString& text, Tone tone, ElidedLabel::Ink ink,
                    QWidget* parent);
// Shows the line with `text`, or hides it when there is none.
void setMessage(QWidget* row, const std::optional<QString>& text);
// A page's column of content, with the page's margins.
QVBoxLayout* pageLayout(QWidget* page);
// The page inside a frame that scrolls when the sheet is short.
QWidget* scrollFrame(QWidget* page, OnboardingPage named);
// Puts the provider's logo inside `holder`, replacing another provider's.
void showLogo(QWidget* holder, AIProvider provider, int size);
QWidget* logoHolder(QWidget* parent, int size);
} // namespace OnboardingParts
