#pragma once

// Thrown by a provider operation whose wait was cancelled.
struct ProviderCancelled {};
