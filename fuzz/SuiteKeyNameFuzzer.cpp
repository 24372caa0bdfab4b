// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// The file names of the shared suite's keys. Input: a key as UTF-8 (the way keys arrive from the
// extension), and, when the first byte is odd, as raw UTF-16 as well.

#include "FuzzSupport.h"

#include "extensionhost/HostProtocol.h"
#include "platform/linux/SuiteKeyFileName.h"

#include <cstring>

namespace lexmira {

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

// The bytes a name stands for; none when it is not a name the suite writes.
std::optional<QByteArray> decode(const std::string& name)
{
    QByteArray bytes;
    for (std::size_t i = 0; i < name.size(); ++i) {
        const char c = name[i];
        const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                           (c >= '0' && c <= '9') || c == '_' || c == '-' || (c == '.' && i > 0);
        if (plain) {
            bytes.append(c);
            continue;
        }
        if (c != '%' || i + 2 >= name.size())
            return std::nullopt;
        const int high = hexDigit(name[i + 1]);
        const int low = hexDigit(name[i + 2]);
        if (high < 0 || low < 0)
            return std::nullopt;
        const char byte = char(high * 16 + low);
        // An escape is used only for what could not be written plainly.
        const bool plainByte = (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
                               (byte >= '0' && byte <= '9') || byte == '_' || byte == '-' ||
                               (byte == '.' && i > 0);
        if (plainByte)
            return std::nullopt;
        bytes.append(byte);
        i += 2;
    }
    return bytes;
}

void check(const QString& key)
{
    const std::string name = SuiteKeyFileName::fromKey(key);
    const QByteArray utf8 = key.toUtf8();
    FUZZ_CHECK(name.empty() == key.isEmpty());
    if (name.empty())
        return;
    // A plain file of the directory, never a writer's temporary file or a path.
    FUZZ_CHECK(name[0] != '.');
    FUZZ_CHECK(name.find('/') == std::string::npos && name.find('\0') == std::string::npos);
    // One name per key, and the key can be read back from it.
    FUZZ_CHECK(decode(name) == utf8);
    FUZZ_CHECK(name.size() <= 3 * std::size_t(utf8.size()));
    if (std::size_t(utf8.size()) <= HostProtocol::maxKeyBytes)
        FUZZ_CHECK(name.size() <= 255);
}

} // namespace

} // namespace lexmira

using namespace lexmira;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0)
        return 0;
    const char* text = reinterpret_cast<const char*>(data) + 1;
    check(QString::fromUtf8(text, qsizetype(size - 1)));
    if (data[0] & 1) {
        QString utf16(qsizetype((size - 1) / 2), Qt::Uninitialized);
        std::memcpy(utf16.data(), text, std::size_t(utf16.size()) * sizeof(QChar));
        check(utf16);
    }
    return 0;
}
