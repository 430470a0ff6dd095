#pragma once

#include "tests/support/TestDir.h"

#include <QByteArray>

#include <sys/resource.h>

/// A temporary folder with folders of one name in one another, however long their paths become, and a file
/// "f" of 7 bytes in each of them. All goes with this object.
class DeepFolders : public TestDir
{
public:
    DeepFolders(int depth, const QByteArray& name);
    ~DeepFolders();
    DeepFolders(const DeepFolders&) = delete;
    DeepFolders& operator=(const DeepFolders&) = delete;

    /// @return descriptor of the last of the folders, owned here
    int deepest() const { return m_deepest; }
    /// @return sizes of all entries, as the file system tells them
    qint64 bytes() const { return m_bytes; }

private:
    int m_deepest;
    qint64 m_bytes = 0;
};

/// Limits the numbers of the descriptors that the process may open while it lives.
class FewDescriptors
{
public:
    explicit FewDescriptors(rlim_t limit)
    {
        ::getrlimit(RLIMIT_NOFILE, &m_before);
        const rlimit few{limit, m_before.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewDescriptors() { ::setrlimit(RLIMIT_NOFILE, &m_before); }
    FewDescriptors(const FewDescriptors&) = delete;
    FewDescriptors& operator=(const FewDescriptors&) = delete;

private:
    rlimit m_before{};
};
