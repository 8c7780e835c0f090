#include "services/CredentialLifecycle.h"

bool CredentialLifecycle::shouldDeleteCredential(ConnectionMode previousMode, ConnectionMode newMode,
                                                 bool providerChanged) {
    if (providerChanged) {
        return true;
    }
    return previousMode == ConnectionMode::apiKey && newMode != ConnectionMode::apiKey;
}
