#pragma once

#include "model/ConnectionMode.h"

// When a change to an account makes its stored credential worthless.
class CredentialLifecycle final {
public:
    CredentialLifecycle() = delete;

    // True after a change of provider, or a move away from the API-key mode.
    static bool shouldDeleteCredential(ConnectionMode previousMode, ConnectionMode newMode,
                                       bool providerChanged);
};
