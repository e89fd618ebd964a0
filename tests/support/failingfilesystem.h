#pragma once

#include "support/filesystem.h"

#include <QFile>
#include <QString>

#include <cerrno>
#include <mutex>
#include <vector>

namespace quillet {

// The real file system, except that chosen calls fail with a chosen errno:
// every call, or only those on a path (or anything under it), and only after
// some of them have gone through. Shared by the tests of every component that
// writes, so each injects a full disk or a refused rename the same way.
class FailingFileSystem : public FileSystem {
  public:
    enum class Call {
        Open,
        Create,
        Write,
        Rename,
        Remove,
        Link,
        MakeFolder,
        SetAttribute,
        RemoveAttribute,
        SetTimes
    };

    // Makes `call` fail with `error`: on `path` or anything under it (any
    // path when empty), once `after` matching calls have worked, `times` times
    // (-1: every call that follows).
    void fail(Call call, int error, const QString& path = {}, int after = 0, int times = -1) {
        std::lock_guard lock(m_mutex);
        m_failures.push_back({call, error, path, after, times});
    }
    void heal() {
        std::lock_guard lock(m_mutex);
        m_failures.clear();
    }

    File open(const QByteArray& path, const char* mode) override {
        return failing(Call::Open, path) ? File() : FileSystem::open(path, mode);
    }
    NewFile create(const QByteArray& target) override {
        return failing(Call::Create, target) ? NewFile() : FileSystem::create(target);
    }
    bool write(File& file, const void* data, std::size_t size) override {
        return !failing(Call::Write, file.path()) && FileSystem::write(file, data, size);
    }
    bool rename(const QByteArray& from, const QByteArray& to) override {
        return !failing(Call::Rename, from, to) && FileSystem::rename(from, to);
    }
    bool remove(const QByteArray& path) override {
        return !failing(Call::Remove, path) && FileSystem::remove(path);
    }
    bool link(const QByteArray& existing, const QByteArray& newPath) override {
        return !failing(Call::Link, existing, newPath) && FileSystem::link(existing, newPath);
    }
    bool makeFolder(const QByteArray& path) override {
        return !failing(Call::MakeFolder, path) && FileSystem::makeFolder(path);
    }
    bool setAttribute(const QByteArray& path, const char* name, const QByteArray& value) override {
        return !failing(Call::SetAttribute, path) && FileSystem::setAttribute(path, name, value);
    }
    bool removeAttribute(const QByteArray& path, const char* name) override {
        return !failing(Call::RemoveAttribute, path) && FileSystem::removeAttribute(path, name);
    }
    bool setTimes(const QByteArray& path, const struct timespec times[2]) override {
        return !failing(Call::SetTimes, path) && FileSystem::setTimes(path, times);
    }

  private:
    struct Failure {
        Call call;
        int error;
        QString path;
        int after;
        int times;
    };

    static bool covers(const QString& chosen, const QByteArray& path) {
        const QByteArray prefix = QFile::encodeName(chosen);
        return chosen.isEmpty() || path == prefix || path.startsWith(prefix + '/');
    }

    // Counts the call against the first failure it matches; sets errno when it fails.
    bool failing(Call call, const QByteArray& path, const QByteArray& other = {}) {
        std::lock_guard lock(m_mutex);
        for (Failure& failure : m_failures) {
            if (failure.call != call || !(covers(failure.path, path) || covers(failure.path, other)))
                continue;
            if (failure.after > 0) {
                --failure.after;
                return false;
            }
            if (failure.times == 0)
                continue;
            if (failure.times > 0)
                --failure.times;
            errno = failure.error;
            return true;
        }
        return false;
    }

    std::mutex m_mutex;
    std::vector<Failure> m_failures;
};

} // namespace quillet
