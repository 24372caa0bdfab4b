#pragma once

#include "Common/EnvCommon.h"

#include <memory>

class UserDefaults;

// The root of the object graph: the identity and shared state of EnvCommon, the platform
// facilities chosen for this system and every long-lived service, built once in a fixed order
// (later services take earlier ones). Nothing else constructs services.
class Env final : public EnvCommon {
public:
    explicit Env(const Bundle& bundle);
    ~Env() override;

    // The application's own settings. Thread-safe.
    UserDefaults& userDefaults() const { return *userDefaults_; }

private:
    std::unique_ptr<UserDefaults> userDefaults_;
};

// The one environment, built from the main bundle on first use (thread-safe) and never torn
// down. A bundle without complete identity stops the process here.
Env& env();
