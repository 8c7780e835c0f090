#pragma once

#include "app/MainWindow.h"
#include "core/ContentView.h"
#include "core/CoreFixtures.h"
#include "onboarding/widgets/OnboardingView.h"

#include <QTest>

// A window on a store of its own, as at a first launch.
struct Launch {
    CoreFixture& fixture;
    std::unique_ptr<ContentView> content;
    std::unique_ptr<MainWindow> window;

    explicit Launch(CoreFixture& f)
        : fixture(f) {
        content = std::make_unique<ContentView>(fixture.store.get(), fixture.preferences.get());
        window = std::make_unique<MainWindow>(content.get());
        window->show();
    }

    // The sheet once it is up, kept still so that the tests see no animation.
    OnboardingView* sheet() const {
        if (!QTest::qWaitFor([this] { return window->onboarding() && window->onboarding()->isVisible(); },
                             3000)) {
            qFatal("the onboarding sheet did not open");
        }
        window->onboarding()->setReduceMotion(true);
        return window->onboarding();
    }
};
