#pragma once

#include <QProcess>
#include <QString>

/// A folder that is shown at another place, by a file system that fails where names of files say so; see
/// faultyfs. It lives as long as this, or until gone(). Needs useOwnMounts().
class FaultyMount
{
public:
    /// @param source folder with the files; @param place the empty folder to show them at
    FaultyMount(const QString& source, const QString& place);
    ~FaultyMount();
    FaultyMount(const FaultyMount&) = delete;
    FaultyMount& operator=(const FaultyMount&) = delete;

    bool isMounted() const { return m_mounted; }
    /// @return why it is not mounted
    QByteArray reason() const { return m_reason; }
    /// Kills what serves the files, as if a network had gone. May be called on any thread.
    void kill() const;

private:
    QProcess m_server;
    QString m_place;
    qint64 m_pid = 0;
    bool m_mounted = false;
    QByteArray m_reason;
};

/// Skips the test where it could not be mounted.
#define NEEDS_FAULTY_MOUNT(mount)                                                                            \
    if (!(mount).isMounted()) {                                                                              \
        QSKIP((mount).reason().constData());                                                                 \
    }
