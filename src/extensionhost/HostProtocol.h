// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>

namespace lexmira {

// The native-messaging conversation between the extension and this host, and the bounds it keeps
// on what the browser side may ask for.
namespace HostProtocol {

inline constexpr std::int64_t version = 1;

// A frame is a 32-bit length in native byte order and that many bytes of UTF-8 JSON; longer
// frames end the connection, in either direction.
inline constexpr std::size_t maxFrameSize = 1024 * 1024;
// How long a message to the extension waits for the extension's reply.
inline constexpr std::chrono::milliseconds replyTimeout{4'000};

// Per connection: messages to the extension waiting for their reply, keychain requests not yet
// answered, keys observed, and bytes written but not yet read by the browser.
inline constexpr std::size_t maxDispatchesInFlight = 16;
inline constexpr std::size_t maxKeychainRequestsInFlight = 32;
inline constexpr std::size_t maxObservedKeys = 64;
inline constexpr std::size_t maxUnreadOutput = 16 * 1024 * 1024;

// A key of the shared suite becomes a file name of at most three bytes per byte; this keeps it
// under the file system's 255.
inline constexpr std::size_t maxKeyBytes = 80;
inline constexpr std::size_t maxAccountBytes = 1024;

} // namespace HostProtocol

} // namespace lexmira
