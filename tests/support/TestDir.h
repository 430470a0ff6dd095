#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

/// A temporary folder with helpers that make what tests need in it. Everything below it is removed with it,
/// whatever its permissions. Relative paths are relative to the folder; every helper makes missing parents
/// and returns the absolute path. Names may hold any byte where a QByteArray is taken.
class TestDir
{
public:
    /// @param parent folder to make the temporary folder in; empty for the system's own place
    explicit TestDir(const QString& parent = QString());
    ~TestDir();
    TestDir(const TestDir&) = delete;
    TestDir& operator=(const TestDir&) = delete;

    /// @return parent for folders that are made and removed many thousand times: a file system in memory
    /// where
    ///         there is one, else the system's own place
    static QString inMemory();

    /// @return the folder's path, without "/" at its end
    QString path() const { return m_dir.path(); }
    /// @return absolute path of @p relative
    QString path(const QString& relative) const;

    /// Makes a folder with permission bits @p mode.
    QString folder(const QString& relative, unsigned mode = 0755) const;
    /// Makes a file with the given content and permission bits.
    QString file(
        const QString& relative, const QByteArray& content = QByteArray(), unsigned mode = 0644) const;
    /// Makes a file of @p bytes zero bytes without blocks on disk.
    QString sparseFile(const QString& relative, qint64 bytes) const;
    /// Makes a symbolic link whose text is @p target.
    QString link(const QString& relative, const QString& target) const;
    QString fifo(const QString& relative) const;
    /// Makes a socket that nobody listens at.
    QString socket(const QString& relative) const;
    /// Makes @p count empty files named after @p pattern, in which %1 is the running number from 0.
    void files(const QString& relativeFolder, int count,
        const QString& pattern = QStringLiteral("file%1.txt")) const;
    /// Sets modification and access time, in seconds since the epoch.
    void setTimes(const QString& relative, qint64 seconds) const;
    void setMode(const QString& relative, unsigned mode) const;

    /// @return content of a file; null where it cannot be read
    QByteArray read(const QString& relative) const;
    /// @return whether anything has that path, a dangling link included
    bool exists(const QString& relative) const;
    /// @return paths of all entries below the folder, relative to it, sorted; folders end in "/", links in
    /// "@"
    QStringList tree(const QString& relative = QString()) const;

private:
    QTemporaryDir m_dir;
};
