// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

// A second (and third) process for the shared-suite tests. It opens the application group's suite
// under the XDG_CONFIG_HOME it is given and, by its first argument:
//   write-user-info <userId> <containerId> [observe]
//       stores a UserInfo under "userInfo"; with observe, it first subscribes to the key and
//       prints "own-callbacks=<n> userId=<id>" once its own write has been delivered.
//   hammer <tag> <count> [progress]
//       stores <count> distinct UserInfo values under "userInfo", one after the other; with
//       progress, prints "w" on a line of its own after each completed write.
//   read <stop file>
//       reads "userInfo" until <stop file> exists and prints "reads=<n> valid=<n> invalid=<n>":
//       a read is valid when it decodes to a value that some hammer wrote in full.
// Exit status 0 on success, 2 when the suite cannot be opened or the arguments are wrong.

#include "Common/EnvCommon.h"
#include "platform/SharedSuite.h"
#include "shared/ContainerValue.h"
#include "shared/UserDefaultsContainer.h"
#include "shared/UserInfo.h"

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>

#include <unistd.h>

namespace lexmira {

namespace {

using namespace std::chrono_literals;

// Large enough that a value cannot be written in one go, and a function of the user identifier,
// so a read mixing two writes is caught.
std::string containerIdFor(const std::string& userId)
{
    std::string padding(32 * 1024, 'x');
    for (std::size_t i = 0; i < padding.size(); ++i)
        padding[i] = userId[i % userId.size()];
    return "c-" + userId + "-" + padding;
}

bool waitFor(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + 20s;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline)
            return false;
        std::this_thread::sleep_for(1ms);
    }
    return true;
}

int writeUserInfo(const std::shared_ptr<DataContainer>& container, int argc, char** argv)
{
    if (argc < 4)
        return 2;
    ContainerValue<UserInfo> userInfo(container, QStringLiteral("userInfo"));
    const UserInfo info{argv[2], false, false, argv[3]};
    if (argc < 5 || std::string(argv[4]) != "observe") {
        userInfo.setValue(info);
        return 0;
    }
    std::atomic<int> callbacks = 0;
    std::atomic<int> barrier = 0;
    std::string seenUserId;
    const auto subscription = userInfo.subscribe([&](std::optional<UserInfo> value) {
        if (callbacks == 0 && value)
            seenUserId = value->userId;
        ++callbacks;
    });
    const auto barrierSubscription =
        container->subscribe(QStringLiteral("peer.barrier"), [&] { ++barrier; });
    userInfo.setValue(info);
    container->set(QByteArray("[true]"), QStringLiteral("peer.barrier"));
    if (!waitFor([&] { return barrier.load() == 1; }))
        return 1;
    std::printf("own-callbacks=%d userId=%s\n", callbacks.load(), seenUserId.c_str());
    return 0;
}

int hammer(const std::shared_ptr<DataContainer>& container, int argc, char** argv)
{
    if (argc < 4)
        return 2;
    ContainerValue<UserInfo> userInfo(container, QStringLiteral("userInfo"));
    const std::string tag = argv[2];
    const int count = std::atoi(argv[3]);
    const bool progress = argc > 4 && std::string(argv[4]) == "progress";
    for (int i = 0; i < count; ++i) {
        const std::string userId = tag + "-" + std::to_string(i);
        userInfo.setValue(UserInfo{userId, i % 2 == 0, i % 3 == 0, containerIdFor(userId)});
        if (progress) {
            std::fputs("w\n", stdout);
            std::fflush(stdout);
        }
    }
    return 0;
}

int read(const std::shared_ptr<DataContainer>& container, int argc, char** argv)
{
    if (argc < 3)
        return 2;
    ContainerValue<UserInfo> userInfo(container, QStringLiteral("userInfo"));
    long reads = 0;
    long valid = 0;
    long invalid = 0;
    while (::access(argv[2], F_OK) != 0) {
        ++reads;
        const auto value = userInfo.value();
        if (value && value->containerId == containerIdFor(value->userId))
            ++valid;
        else
            ++invalid;
    }
    std::printf("reads=%ld valid=%ld invalid=%ld\n", reads, valid, invalid);
    return 0;
}

} // namespace

} // namespace lexmira

using namespace lexmira;

int main(int argc, char** argv)
{
    if (argc < 2)
        return 2;
    const std::shared_ptr<SharedSuite> suite =
        SharedSuite::open(QString::fromUtf8(appGroupSuiteName));
    if (!suite)
        return 2;
    const auto container = std::make_shared<UserDefaultsContainer>(suite);
    const std::string command = argv[1];
    int status = 2;
    if (command == "write-user-info")
        status = writeUserInfo(container, argc, argv);
    else if (command == "hammer")
        status = hammer(container, argc, argv);
    else if (command == "read")
        status = read(container, argc, argv);
    std::fflush(stdout);
    return status;
}
