#pragma once

#include "tests/support/FileTree.h"
#include "tests/support/RecordedCalls.h"

#include <QString>
#include <QStringList>

#include <functional>

/// What a copy, move or delete has to do, worked out a second time from nothing but what its file calls gave.
/// It walks through the recorded calls of a run, which must be those that the operation makes, in their
/// order, and follows their results, whatever they are: so it knows which questions must have been asked,
/// what must lie on disk afterwards, and what the progress dialog must have held, also where calls failed.
class DescribedOperation : private RecordedCalls
{
public:
    /// Chooses the button of a box by its text, as withoutFacts() leaves it.
    using Choose = std::function<QString(const QString& text)>;

    using RecordedCalls::StopBefore;

    /// @param base the watched folder; all paths that the operation is given are below it
    /// @param before what lay in the folder
    /// @param calls the recorded calls, with relative paths and kinds
    DescribedOperation(const QString& base, FileTree before, const QStringList& calls);

    /// Walks through the calls of an operation.
    /// @param kind OperationKind; any other counts and does nothing
    /// @param items full paths; @param destination gsDropBase
    /// @return what is wrong; empty where all is as it must be
    QString run(int kind, const QStringList& items, const QString& destination, const Choose& choose,
        const StopBefore& stop);

    /// @return text of a box without the times and sizes in it
    static QString withoutFacts(QString text);

    // What must be so after run().
    QStringList texts; ///< of all boxes, without facts
    FileTree after;
    using RecordedCalls::abort;
    int deleteAll = 0;
    int ignoreAll = 0;
    int replaceAll = 0;
    qint64 fileCount = 0;
    qint64 folderCount = 0;
    qint64 total = 1;
    qint64 done = 0;

private:
    QString ask(const QString& text);
    QString report(const QString& prefix, const QString& path, int error);

    void count(const QString& path);
    void countEntries(const QString& path);
    void makeFolders(const QString& target);
    int makeMissing(const QString& target);
    void copyItem(const QString& src, const QString& dst);
    void copyEntries(const QString& src, const QString& dst);
    void copyFile(const QString& src, const QString& dst);
    bool tryCopy(const QString& src, const QString& dst);
    bool copyLink(const QString& src, const QString& dst);
    bool openRepeatedly(const QString& path, const QString& prefix);
    bool copyContent(const QString& src, const QString& dst);
    void moveItems(const QStringList& items, const QString& destination);
    void deleteItem(const QString& path);
    bool deleteEntries(const QString& path);
    void deleteFile(const QString& path);
    void removeRepeatedly(const QString& prefix, const QString& path);

    Choose m_choose;
};
