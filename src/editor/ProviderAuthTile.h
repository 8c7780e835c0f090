#pragma once

#include "model/AIProvider.h"

#include <QString>

#include <optional>

// One selectable way of connecting an account, as the editor offers it.
struct ProviderAuthTile {
    // What pressing the tile does.
    enum class Action { openProviderPage, officialAPIKey, manualTracking };

    QString title;
    QString subtitle;
    std::optional<QString> badge;
    bool isSelected = false;
    AIProvider logo = AIProvider::openAI;
    Action action = Action::manualTracking;

    friend bool operator==(const ProviderAuthTile&, const ProviderAuthTile&) = default;
};
