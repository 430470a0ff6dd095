#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

/// A virtual X server of its own with a window manager, as long as the object lives.
class BenchDisplay
{
public:
    BenchDisplay()
    {
        m_server.start(QStringLiteral("Xvfb"),
            {QStringLiteral("-displayfd"), QStringLiteral("1"), QStringLiteral("-screen"),
                QStringLiteral("0"), QStringLiteral("1280x800x24"), QStringLiteral("-br"),
                QStringLiteral("-nolisten"), QStringLiteral("tcp")});
        if (m_server.waitForStarted() && m_server.waitForReadyRead(10000)) {
            m_name = ':' + m_server.readAllStandardOutput().trimmed();
            startWindowManager();
        }
    }
    ~BenchDisplay()
    {
        m_manager.terminate();
        m_manager.waitForFinished();
        m_server.terminate();
        m_server.waitForFinished();
    }
    Q_DISABLE_COPY_MOVE(BenchDisplay)

    /// @return value for DISPLAY; empty if the server or the window manager did not start
    QByteArray name() const { return m_name; }

private:
    /// Openbox tells when it is ready by running its start-up command.
    void startWindowManager()
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("DISPLAY"), QString::fromLatin1(m_name));
        m_manager.setProcessEnvironment(environment);
        m_manager.setStandardErrorFile(QProcess::nullDevice());
        m_manager.start(QStringLiteral("openbox"),
            {QStringLiteral("--sm-disable"), QStringLiteral("--startup"), QStringLiteral("echo up")});
        if (!m_manager.waitForStarted() || !m_manager.waitForReadyRead(10000)) {
            m_name.clear();
        }
    }

    QProcess m_server;
    QProcess m_manager;
    QByteArray m_name;
};
