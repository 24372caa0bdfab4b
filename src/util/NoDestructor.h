// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <new>
#include <utility>

namespace lexmira {

// Holds a process-lifetime object that is built on first use and never destroyed, so that no
// static destructor runs while worker threads of that object may still be live at exit.
template <class T>
class NoDestructor {
public:
    template <class... Args>
    explicit NoDestructor(Args&&... args)
    {
        new (storage_) T(std::forward<Args>(args)...);
    }
    NoDestructor(const NoDestructor&) = delete;
    NoDestructor& operator=(const NoDestructor&) = delete;
    ~NoDestructor() = default;

    T& get() { return *std::launder(reinterpret_cast<T*>(storage_)); }

private:
    alignas(T) unsigned char storage_[sizeof(T)];
};

} // namespace lexmira
