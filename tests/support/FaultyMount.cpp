#include "tests/support/FaultyMount.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <csignal>
#include <sys/mount.h>
#include <sys/stat.h>

namespace {

dev_t deviceOf(const QString& path)
{
    struct stat facts = {};
    return ::stat(QFile::encodeName(path).constData(), &facts) == 0 ? facts.st_dev : 0;
}

} // namespace

FaultyMount::FaultyMount(const QString& source, const QString& place)
    : m_place(place)
{
    const QString program = QCoreApplication::applicationDirPath() + QStringLiteral("/faultyfs");
    if (!QFileInfo::exists(program)) {
        m_reason = "built without libfuse3";
        return;
    }
    const dev_t before = deviceOf(place);
    m_server.setProcessChannelMode(QProcess::MergedChannels);
    m_server.start(program, {source, place});
    if (m_server.waitForStarted()) {
        m_pid = m_server.processId();
        m_mounted = QTest::qWaitFor([&] {
            const dev_t now = deviceOf(place);
            return m_server.state() == QProcess::NotRunning || (now != before && now != 0);
        }) && m_server.state() == QProcess::Running;
    }
    if (!m_mounted) {
        m_reason = "nothing can be mounted by FUSE here: " + m_server.readAll();
    }
}

FaultyMount::~FaultyMount()
{
    if (m_mounted) {
        ::umount2(QFile::encodeName(m_place).constData(), MNT_DETACH);
    }
    if (m_server.state() != QProcess::NotRunning && !m_server.waitForFinished(5000)) {
        m_server.kill();
        m_server.waitForFinished();
    }
}

void FaultyMount::kill() const
{
    ::kill(static_cast<pid_t>(m_pid), SIGKILL);
}
