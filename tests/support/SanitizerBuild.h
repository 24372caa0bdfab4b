// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

// What a sanitizer build changes about the figures a test can hold a process to.

namespace lexmira::test {

// AddressSanitizer keeps freed blocks in quarantine and adds shadow memory and redzones, and
// ThreadSanitizer keeps shadow memory for every word, so in such a build the resident size says
// nothing about what the code itself holds on to.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool residentSizeIsTheCodes = false;
#else
inline constexpr bool residentSizeIsTheCodes = true;
#endif

// ThreadSanitizer makes every memory access several times slower; the times a contract gives are
// held exactly in the other builds, and with this much room in that one.
#if defined(__SANITIZE_THREAD__)
inline constexpr int sanitizerTimeScale = 4;
#else
inline constexpr int sanitizerTimeScale = 1;
#endif

} // namespace lexmira::test
