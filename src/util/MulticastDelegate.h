// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QPointer>

#include <algorithm>
#include <iterator>
#include <vector>

namespace lexmira {

// A set of weakly held listeners, notified all at once. A listener is any QObject; it is never
// kept alive by the set and disappears from it when destroyed. On invoke, each live entry is
// cast to T; entries that are not a T are skipped. Main thread only.
template <class T>
class MulticastDelegate {
public:
    // Adding the same object twice keeps one entry.
    void add(QObject* listener)
    {
        if (listener && !contains(listener))
            delegates_.emplace_back(listener);
    }

    // Removing an object that is not present does nothing.
    void remove(QObject* listener)
    {
        std::erase_if(delegates_, [listener](const QPointer<QObject>& entry) {
            return entry.isNull() || entry.data() == listener;
        });
    }

    // Calls body once for every live listener that is a T. The set is copied first, so adding
    // or removing listeners from inside body does not change the current pass.
    template <class Body>
    void invoke(Body&& body)
    {
        const auto snapshot = liveEntries();
        for (const auto& entry : snapshot)
            if (auto* listener = dynamic_cast<T*>(entry.data()))
                body(*listener);
    }

    // Live objects held, whether or not they are a T.
    std::size_t count() const { return liveEntries().size(); }

private:
    bool contains(const QObject* listener) const
    {
        return std::any_of(
            delegates_.begin(), delegates_.end(),
            [listener](const QPointer<QObject>& entry) { return entry == listener; });
    }

    std::vector<QPointer<QObject>> liveEntries() const
    {
        std::vector<QPointer<QObject>> live;
        std::copy_if(delegates_.begin(), delegates_.end(), std::back_inserter(live),
                     [](const QPointer<QObject>& entry) { return !entry.isNull(); });
        return live;
    }

    std::vector<QPointer<QObject>> delegates_;
};

} // namespace lexmira
