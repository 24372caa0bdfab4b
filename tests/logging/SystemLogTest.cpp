// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SystemLog.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <string>

namespace lexmira {

namespace {

using Fields = std::map<std::string, std::string>;

// Stands in for the journal daemon: the calling thread moves into a private mount namespace with
// a fresh tmpfs over /run, and a datagram socket is bound where the journal's native socket is.
// The real /run, and any journal running on the machine, are left untouched; other threads keep
// seeing them. Needs the privilege to create mount namespaces (the test session runs as root).
class PrivateJournalSocket {
public:
    PrivateJournalSocket() { failure_ = bindSocket(); }
    PrivateJournalSocket(const PrivateJournalSocket&) = delete;
    PrivateJournalSocket& operator=(const PrivateJournalSocket&) = delete;

    ~PrivateJournalSocket()
    {
        if (socket_ >= 0)
            ::close(socket_);
        if (originalNamespace_ >= 0) {
            ::setns(originalNamespace_, CLONE_NEWNS);
            ::close(originalNamespace_);
        }
    }

    // Empty when the socket is bound; otherwise the step that failed and why.
    const std::string& failure() const { return failure_; }

    // The fields of the next entry, or none when nothing arrives within a few seconds.
    std::optional<Fields> receive()
    {
        pollfd ready{socket_, POLLIN, 0};
        if (::poll(&ready, 1, 5000) != 1)
            return std::nullopt;
        std::string datagram(1 << 20, '\0');
        const auto length = ::recv(socket_, datagram.data(), datagram.size(), 0);
        if (length < 0)
            return std::nullopt;
        datagram.resize(std::size_t(length));
        return parse(datagram);
    }

    // Nothing more arrives within a short while.
    bool isQuiet()
    {
        pollfd ready{socket_, POLLIN, 0};
        return ::poll(&ready, 1, 300) == 0;
    }

private:
    std::string bindSocket()
    {
        originalNamespace_ = ::open("/proc/thread-self/ns/mnt", O_RDONLY | O_CLOEXEC);
        if (originalNamespace_ < 0)
            return failed("open /proc/thread-self/ns/mnt");
        if (::unshare(CLONE_NEWNS) != 0)
            return failed("unshare(CLONE_NEWNS)");
        if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
            return failed("make / private");
        if (::mount("lexmira-test-run", "/run", "tmpfs", MS_NOSUID | MS_NODEV, "mode=0755") != 0)
            return failed("mount tmpfs on /run");
        if (::mkdir("/run/systemd", 0755) != 0 || ::mkdir("/run/systemd/journal", 0755) != 0)
            return failed("mkdir /run/systemd/journal");
        socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
        if (socket_ < 0)
            return failed("socket");
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::strcpy(address.sun_path, "/run/systemd/journal/socket");
        if (::bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
            return failed("bind /run/systemd/journal/socket");
        return {};
    }

    static std::string failed(const char* step)
    {
        return std::string(step) + ": " + std::strerror(errno);
    }

    // The journal's native format: "KEY=value\n", or, for a value that holds a newline,
    // "KEY\n", its length as 64-bit little-endian, the value and "\n".
    static Fields parse(const std::string& datagram)
    {
        Fields fields;
        std::size_t at = 0;
        while (at < datagram.size()) {
            const auto lineEnd = datagram.find('\n', at);
            if (lineEnd == std::string::npos)
                break;
            const std::string line = datagram.substr(at, lineEnd - at);
            if (const auto equals = line.find('='); equals != std::string::npos) {
                fields[line.substr(0, equals)] = line.substr(equals + 1);
                at = lineEnd + 1;
                continue;
            }
            if (lineEnd + 9 > datagram.size())
                break;
            std::uint64_t size = 0;
            for (int i = 7; i >= 0; --i)
                size = (size << 8) |
                       static_cast<unsigned char>(datagram[lineEnd + 1 + std::size_t(i)]);
            fields[line] = datagram.substr(lineEnd + 9, size);
            at = lineEnd + 9 + size + 1;
        }
        return fields;
    }

    int originalNamespace_ = -1;
    int socket_ = -1;
    std::string failure_;
};

TEST(SystemLog, WritesAnErrorEntryUnderTheApplicationsIdentifierToTheJournal)
{
    PrivateJournalSocket journal;
    ASSERT_EQ(journal.failure(), "");

    SystemLog::create()->error("Error: skrivo request bad request 404");

    const auto entry = journal.receive();
    ASSERT_TRUE(entry);
    EXPECT_EQ(entry->at("MESSAGE"), "Error: skrivo request bad request 404");
    EXPECT_EQ(entry->at("PRIORITY"), "3");
    EXPECT_EQ(entry->at("SYSLOG_IDENTIFIER"), "lexmira-companion");
    EXPECT_TRUE(journal.isQuiet());
}

TEST(SystemLog, LinesArriveOneEntryEachInOrderWithTheirTextIntact)
{
    PrivateJournalSocket journal;
    ASSERT_EQ(journal.failure(), "");
    const auto log = SystemLog::create();

    log->error("Error: skrivo request failed: Connection refused");
    log->error("Error: skrivo response has invalid type");
    log->error("a description\nwith a newline and 100% of a %s");

    const auto first = journal.receive();
    const auto second = journal.receive();
    const auto third = journal.receive();
    ASSERT_TRUE(first && second && third);
    EXPECT_EQ(first->at("MESSAGE"), "Error: skrivo request failed: Connection refused");
    EXPECT_EQ(second->at("MESSAGE"), "Error: skrivo response has invalid type");
    EXPECT_EQ(third->at("MESSAGE"), "a description\nwith a newline and 100% of a %s");
    EXPECT_EQ(third->at("PRIORITY"), "3");
}

} // namespace

} // namespace lexmira
