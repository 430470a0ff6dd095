#pragma once

#include <QObject>

class Checksum;
class QFile;

/// Reads the file of a checksum dialog once and takes both its digests. Lives on a thread of its own; it
/// reads path and running flag in the dialog, advances the count of bytes there and leaves the digests there.
class ChecksumWorker : public QObject
{
    Q_OBJECT

public:
    /// @param parent the dialog to work for, which outlives the worker; not its owner
    explicit ChecksumWorker(Checksum* parent);

    /// Opens a file for reading without ever waiting for another process, as a FIFO would.
    /// @return whether it is open; the file's errorString() tells why it is not
    static bool openForReading(QFile& file);

public slots:
    /// The whole work. Ends with finished(), whatever happens. What was read until a cancel or a read error
    /// has its digests as well.
    void StartWork();

signals:
    void finished();

private:
    Checksum* m_parent;
};
