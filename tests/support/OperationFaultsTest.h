#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>

/// Base of the tests that run operations into real faults: none of them may leave a descriptor open.
class OperationFaultsTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    static bool isRoot();
    /// Makes data rows "ordinary user" and, where the test runs as root, "root", with a column "ordinary".
    static void bothUsers();
    /// @return a path as the system takes it
    static QByteArray bytes(const QString& path);
    /// @return 0 where two trees hold the same, 1 where they differ, more where they cannot be compared
    static int differences(const QString& one, const QString& other);

private:
    int m_descriptors = 0;
};
