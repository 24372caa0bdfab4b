// SPDX-FileCopyrightText: 2026 The Lexmira Companion developers
// SPDX-License-Identifier: Apache-2.0

#include "platform/SharedSuite.h"

#include "platform/PlatformLog.h"
#include "platform/linux/SuiteKeyFileName.h"

#include <QRandomGenerator>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace lexmira {

// The suite is a directory shared by every process of the user, one regular file per key whose
// content is exactly the stored bytes. A value is replaced by renaming a complete temporary file
// over the key's file, so a reader opens either the old file or the new one, never a partial
// one. Temporary files start with "." and are invisible to observers; the directory's inotify
// watch turns every rename, removal and completed write of a key's file into one notification.
//
// Other processes of the user can remove or replace the directory while it is in use; it is
// then created again and watched anew, and writes never go to a directory nobody reads.

namespace {

constexpr std::uint32_t watchedEvents = IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE | IN_MOVED_FROM;
// The directory itself going away: removed, or renamed to somewhere else.
constexpr std::uint32_t rootEvents = IN_DELETE_SELF | IN_MOVE_SELF;

constexpr qsizetype maxValueBytes = SharedSuite::maxValueBytes;
constexpr std::time_t staleTemporaryAgeSeconds =
    std::chrono::seconds(SharedSuite::staleTemporaryAge).count();

class FileDescriptor {
public:
    explicit FileDescriptor(int fd = -1)
        : fd_(fd)
    {
    }
    ~FileDescriptor()
    {
        if (fd_ >= 0)
            ::close(fd_);
    }
    FileDescriptor(FileDescriptor&& other) noexcept
        : fd_(std::exchange(other.fd_, -1))
    {
    }
    FileDescriptor& operator=(FileDescriptor&& other) noexcept
    {
        if (this != &other) {
            close();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    int get() const { return fd_; }
    bool valid() const { return fd_ >= 0; }
    // Closes now; false when closing reported an error (a write that did not make it).
    bool close()
    {
        const int fd = fd_;
        fd_ = -1;
        return fd < 0 || ::close(fd) == 0;
    }

private:
    int fd_;
};

bool writeAll(int fd, const QByteArray& bytes)
{
    const char* data = bytes.constData();
    std::size_t left = static_cast<std::size_t>(bytes.size());
    while (left > 0) {
        const ssize_t written = ::write(fd, data, left);
        if (written < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        data += written;
        left -= static_cast<std::size_t>(written);
    }
    return true;
}

// The whole file, or none when it cannot be read or holds more than maxValueBytes.
std::optional<QByteArray> readAll(int fd)
{
    QByteArray bytes;
    char buffer[16384];
    for (;;) {
        const ssize_t count = ::read(fd, buffer, sizeof buffer);
        if (count < 0) {
            if (errno == EINTR)
                continue;
            return std::nullopt;
        }
        if (count == 0)
            return bytes;
        if (bytes.size() + count > maxValueBytes)
            return std::nullopt;
        bytes.append(buffer, count);
    }
}

void syncDirectory(const std::string& directory)
{
    const FileDescriptor fd(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (fd.valid())
        ::fsync(fd.get());
}

// Creates each missing directory of path with mode 0700; true when path is a directory after.
bool makeDirectories(const std::string& path)
{
    for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
        const std::string prefix = path.substr(0, end);
        if (::mkdir(prefix.c_str(), 0700) == 0)
            ::chmod(prefix.c_str(), 0700); // whatever the umask took away
        else if (errno != EEXIST)
            return false;
        if (end == std::string::npos)
            break;
    }
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// The suite's own directory must be a directory of this user that nobody else can write to. One
// of this user's that group or others may write to is made 0700; anything else is not used.
bool isUsableRoot(const std::string& root)
{
    struct stat status {};
    if (::lstat(root.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        qCCritical(lcSuite, "Shared suite %s is not a directory; not used", root.c_str());
        return false;
    }
    if (status.st_uid != ::geteuid()) {
        qCCritical(lcSuite, "Shared suite %s belongs to user %u, not to this user; not used",
                   root.c_str(), static_cast<unsigned>(status.st_uid));
        return false;
    }
    if ((status.st_mode & (S_IWGRP | S_IWOTH)) != 0 && ::chmod(root.c_str(), 0700) != 0) {
        qCCritical(lcSuite, "Shared suite %s is writable by others and cannot be made private",
                   root.c_str());
        return false;
    }
    return true;
}

// Creates the suite's directory if it is missing and checks it.
bool prepareRoot(const std::string& root)
{
    return makeDirectories(root) && isUsableRoot(root);
}

// Removes the temporary files that writers killed between creating and renaming them left
// behind. Only files old enough that no live writer can still own them are touched.
void removeStaleTemporaries(const std::string& root)
{
    DIR* directory = ::opendir(root.c_str());
    if (!directory)
        return;
    const std::time_t now = std::time(nullptr);
    while (const dirent* entry = ::readdir(directory)) {
        const std::string name = entry->d_name;
        if (name.size() < 2 || name[0] != '.' || name == "..")
            continue;
        struct stat status {};
        if (::fstatat(::dirfd(directory), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 ||
            !S_ISREG(status.st_mode) || status.st_uid != ::geteuid())
            continue;
        if (now - status.st_mtime >= staleTemporaryAgeSeconds)
            ::unlinkat(::dirfd(directory), name.c_str(), 0);
    }
    ::closedir(directory);
}

// XDG_CONFIG_HOME when set to an absolute path, otherwise $HOME/.config.
std::string configHome()
{
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config && config[0] == '/')
        return config;
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.config";
}

// The observers of the suite and the thread that calls them. Shared with that thread, so that
// the thread never outlives what it uses, even when the suite goes away inside a callback.
class Watcher {
public:
    Watcher(std::string root, FileDescriptor inotify, int watch, FileDescriptor wakeup)
        : root_(std::move(root))
        , inotify_(std::move(inotify))
        , watch_(watch)
        , wakeup_(std::move(wakeup))
    {
    }

    void add(std::shared_ptr<SharedSuiteObserver> observer, const QString& key)
    {
        const std::lock_guard lock(mutex_);
        auto entry = std::make_shared<Entry>(Entry{std::move(observer), key, true});
        observers_[SuiteKeyFileName::fromKey(key)].push_back(std::move(entry));
    }

    void remove(const SharedSuiteObserver* observer, const QString& key)
    {
        std::unique_lock lock(mutex_);
        const auto found = observers_.find(SuiteKeyFileName::fromKey(key));
        if (found == observers_.end())
            return;
        auto& entries = found->second;
        const auto entry = std::find_if(entries.begin(), entries.end(), [&](const auto& entry) {
            return entry->observer.get() == observer && entry->key == key;
        });
        if (entry == entries.end())
            return;
        const std::shared_ptr<Entry> removed = *entry;
        removed->active = false;
        entries.erase(entry);
        if (entries.empty())
            observers_.erase(found);
        // A call in flight on the watcher thread ends before the observer is let go; from inside
        // that very call there is nothing to wait for.
        if (std::this_thread::get_id() != threadId_)
            callEnded_.wait(lock, [&] { return running_ != removed; });
        lock.unlock();
        // The observer's last reference may go here, outside the lock.
    }

    void run()
    {
        {
            const std::lock_guard lock(mutex_);
            threadId_ = std::this_thread::get_id();
        }
        alignas(inotify_event) char buffer[64 * 1024];
        while (!stopped_) {
            pollfd fds[2] = {{inotify_.get(), POLLIN, 0}, {wakeup_.get(), POLLIN, 0}};
            if (::poll(fds, 2, -1) < 0) {
                if (errno == EINTR)
                    continue;
                return;
            }
            if (stopped_ || (fds[1].revents & POLLIN))
                return;
            if (fds[0].revents & (POLLERR | POLLHUP | POLLNVAL))
                return;
            const ssize_t length = ::read(inotify_.get(), buffer, sizeof buffer);
            if (length <= 0)
                continue;
            std::vector<std::string> changed;
            bool overflow = false;
            bool rootGone = false;
            for (ssize_t offset = 0; offset < length;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + offset);
                offset += static_cast<ssize_t>(sizeof(inotify_event) + event->len);
                if (event->mask & IN_Q_OVERFLOW)
                    overflow = true;
                else if (event->wd != watch_)
                    continue; // a watch given up already
                else if (event->mask & (rootEvents | IN_IGNORED))
                    rootGone = true;
                else if ((event->mask & watchedEvents) && event->len > 0 && event->name[0] != '.')
                    changed.emplace_back(event->name);
            }
            for (const auto& name : changed)
                notify(name);
            if (rootGone)
                watchRootAgain();
            if (overflow || rootGone) {
                removeStaleTemporaries(root_);
                notifyEveryKey();
            }
        }
    }

    void stop()
    {
        stopped_ = true;
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(wakeup_.get(), &one, sizeof one);
    }

private:
    // The directory was removed or moved away: the one at the suite's place, created again if
    // need be, is watched instead. What changed in between is unknown, so every key notifies.
    void watchRootAgain()
    {
        ::inotify_rm_watch(inotify_.get(), watch_); // fails harmlessly when already ignored
        watch_ = -1;
        if (!prepareRoot(root_))
            return;
        watch_ = ::inotify_add_watch(inotify_.get(), root_.c_str(),
                                     watchedEvents | rootEvents | IN_ONLYDIR | IN_DONT_FOLLOW);
        if (watch_ < 0)
            qCCritical(lcSuite, "Shared suite %s can no longer be watched: %s", root_.c_str(),
                       std::strerror(errno));
    }

    struct Entry {
        std::shared_ptr<SharedSuiteObserver> observer;
        QString key;
        bool active;
    };

    void notify(const std::string& fileName)
    {
        std::vector<std::shared_ptr<Entry>> entries;
        {
            const std::lock_guard lock(mutex_);
            const auto found = observers_.find(fileName);
            if (found == observers_.end())
                return;
            entries = found->second;
        }
        call(entries);
    }

    void notifyEveryKey()
    {
        std::vector<std::shared_ptr<Entry>> entries;
        {
            const std::lock_guard lock(mutex_);
            for (const auto& [fileName, observers] : observers_)
                entries.insert(entries.end(), observers.begin(), observers.end());
        }
        call(entries);
    }

    void call(const std::vector<std::shared_ptr<Entry>>& entries)
    {
        for (const auto& entry : entries) {
            {
                const std::lock_guard lock(mutex_);
                if (!entry->active || stopped_)
                    continue;
                running_ = entry;
            }
            entry->observer->observeValue(entry->key);
            {
                const std::lock_guard lock(mutex_);
                running_.reset();
            }
            callEnded_.notify_all();
        }
    }

    const std::string root_;
    FileDescriptor inotify_;
    int watch_; // watcher thread only after start
    FileDescriptor wakeup_;
    std::atomic<bool> stopped_ = false;

    std::mutex mutex_;
    std::condition_variable callEnded_;
    std::map<std::string, std::vector<std::shared_ptr<Entry>>> observers_;
    std::shared_ptr<Entry> running_;
    std::thread::id threadId_;
};

class DirectorySharedSuite final : public SharedSuite {
public:
    DirectorySharedSuite(std::string root, std::shared_ptr<Watcher> watcher)
        : root_(std::move(root))
        , watcher_(std::move(watcher))
        , thread_([watcher = watcher_] { watcher->run(); })
    {
    }

    ~DirectorySharedSuite() override
    {
        watcher_->stop();
        // Released from inside one of its own callbacks, the suite cannot wait for the thread
        // that is running it; the thread holds the watcher and ends on its own.
        if (thread_.get_id() == std::this_thread::get_id())
            thread_.detach();
        else
            thread_.join();
    }

    std::optional<QByteArray> data(const QString& key) const override
    {
        const std::string name = SuiteKeyFileName::fromKey(key);
        if (name.empty())
            return std::nullopt;
        // Non-blocking, so that whatever sits under the key's name (a FIFO) cannot hold the
        // reader; only a regular file is read.
        const FileDescriptor fd(
            ::open(path(name).c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
        if (!fd.valid())
            return std::nullopt;
        struct stat status {};
        if (::fstat(fd.get(), &status) != 0 || !S_ISREG(status.st_mode) ||
            status.st_size > maxValueBytes)
            return std::nullopt;
        return readAll(fd.get());
    }

    void setData(const std::optional<QByteArray>& bytes, const QString& key) override
    {
        const std::string name = SuiteKeyFileName::fromKey(key);
        if (name.empty())
            return;
        if (!bytes) {
            if (::unlink(path(name).c_str()) == 0)
                syncDirectory(root_);
            return;
        }
        if (bytes->size() > maxValueBytes) {
            qCWarning(lcSuite, "Value of %lld bytes for %s not stored",
                      static_cast<long long>(bytes->size()), name.c_str());
            return;
        }
        // The directory can have been removed since it was last used; it is created again
        // rather than letting the write go nowhere.
        if (!writeValue(*bytes, name) && errno == ENOENT && prepareRoot(root_))
            writeValue(*bytes, name);
    }

    void addObserver(std::shared_ptr<SharedSuiteObserver> observer, const QString& key) override
    {
        if (observer)
            watcher_->add(std::move(observer), key);
    }

    void removeObserver(const SharedSuiteObserver* observer, const QString& key) override
    {
        watcher_->remove(observer, key);
    }

private:
    // Writes bytes under the file name; false with errno set when it did not make it, and
    // whatever was there before stays.
    bool writeValue(const QByteArray& bytes, const std::string& name)
    {
        std::string temporary;
        FileDescriptor fd;
        for (int attempt = 0; attempt < 100 && !fd.valid(); ++attempt) {
            temporary = path("." + name.substr(0, 64) + "." +
                             std::to_string(QRandomGenerator::global()->generate64()));
            fd = FileDescriptor(::open(temporary.c_str(),
                                       O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
            if (!fd.valid() && errno != EEXIST)
                return false;
        }
        if (!fd.valid())
            return false;
        const bool written = ::fchmod(fd.get(), 0600) == 0 && writeAll(fd.get(), bytes) &&
                             ::fsync(fd.get()) == 0 && fd.close();
        if (!written || ::rename(temporary.c_str(), path(name).c_str()) != 0) {
            const int error = errno;
            ::unlink(temporary.c_str());
            errno = error;
            return false;
        }
        syncDirectory(root_);
        return true;
    }

    std::string path(const std::string& name) const { return root_ + "/" + name; }

    std::string root_;
    std::shared_ptr<Watcher> watcher_;
    std::thread thread_;
};

} // namespace

QString SharedSuite::location(const QString& suiteName)
{
    const std::string name = suiteName.toStdString();
    if (name.empty() || name == "." || name == ".." || name.find('/') != std::string::npos)
        return {};
    return QString::fromStdString(configHome() + "/group-containers/" + name);
}

std::unique_ptr<SharedSuite> SharedSuite::open(const QString& suiteName)
{
    const std::string root = location(suiteName).toStdString();
    if (root.empty() || root.front() != '/' || !prepareRoot(root))
        return nullptr;
    FileDescriptor inotify(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
    FileDescriptor wakeup(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC));
    if (!inotify.valid() || !wakeup.valid())
        return nullptr;
    const int watch = ::inotify_add_watch(inotify.get(), root.c_str(),
                                          watchedEvents | rootEvents | IN_ONLYDIR | IN_DONT_FOLLOW);
    if (watch < 0)
        return nullptr;
    removeStaleTemporaries(root);
    return std::make_unique<DirectorySharedSuite>(
        root, std::make_shared<Watcher>(root, std::move(inotify), watch, std::move(wakeup)));
}

} // namespace lexmira
