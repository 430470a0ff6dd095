#include "tests/support/ShownFolderFixture.h"

#include "app/aGlobal.h"
#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/ModalAnswers.h"

#include <QDialog>
#include <QDir>
#include <QElapsedTimer>
#include <QHash>
#include <QLineEdit>
#include <QTest>

namespace {

/// @return how the listing differs from a folder on disk, the sizes of its files included; empty where it
/// does not
QStringList staleRows(const MPanel* panel, const QString& folder, const QStringList& namesOnDisk)
{
    if (panel->listModel->rootPath() != folder) {
        return {"shows " + panel->listModel->rootPath()};
    }
    QHash<QString, int> times;
    for (const QString& name : listNames(panel)) {
        ++times[name];
    }
    QStringList all;
    for (const QString& name : namesOnDisk) {
        const int shown = times.take(name);
        if (shown != 1) {
            all.append(QStringLiteral("%1 times: %2").arg(shown).arg(name));
        }
    }
    const QStringList tooMuch = times.keys();
    for (const QString& name : tooMuch) {
        all.append("too much: " + name);
    }
    const QModelIndex root = panel->list->rootIndex();
    for (int row = 0; row < panel->listModel->rowCount(root); ++row) {
        const QModelIndex index = panel->listModel->index(row, 0, root);
        const QFileInfo info(folder + '/' + panel->listModel->entryName(index));
        if (info.isFile() && panel->listModel->size(index) != info.size()) {
            all.append("size of " + info.fileName());
        }
        if (info.exists() && info.isDir() != panel->listModel->isDir(index)) {
            all.append("kind of " + info.fileName());
        }
    }
    return all;
}

} // namespace

void ShownFolderFixture::start()
{
    dir = std::make_unique<TestDir>(TestDir::inMemory());
    dir->file(QStringLiteral("a/b/shown/f"), "1");
    dir->file(QStringLiteral("a/b/shown/g"), "22");
    dir->folder(QStringLiteral("a/b/shown/sub"));
    dir->file(QStringLiteral("a/b/beside"));
    dir->folder(QStringLiteral("to"));
    makePanel(dir->path());
    other = std::make_unique<MPanel>(&window->window);
    gwPanel1 = panel;
    gwPanel2 = other.get();
    other->show();
    QVERIFY(window->activate());
    QVERIFY(waitForList(panel));
    QVERIFY(waitForList(other.get()));
}

void ShownFolderFixture::end()
{
    other.reset();
    PanelFixture::end();
}

bool ShownFolderFixture::isLong()
{
    return qEnvironmentVariableIntValue("VANTREL_LONG") != 0;
}

QStringList ShownFolderFixture::namesOnDisk(const QString& folder)
{
    QStringList names
        = QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    names.append(QStringLiteral(".."));
    names.sort();
    return names;
}

/// Looking takes long in a large folder, so most of the time is left to what is waited for.
bool ShownFolderFixture::showsTheDisk(const MPanel* which, const QString& folder)
{
    const int mostMs = isLong() ? 120000 : 20000;
    QElapsedTimer clock;
    clock.start();
    QStringList stale;
    qint64 nextLook = 0;
    const bool shows = QTest::qWaitFor(
        [&] {
            if (clock.elapsed() < nextLook) {
                return false;
            }
            const qint64 began = clock.elapsed();
            stale = staleRows(which, folder, namesOnDisk(folder));
            nextLook = clock.elapsed() + 4 * (clock.elapsed() - began);
            return stale.isEmpty();
        },
        mostMs);
    if (!shows) {
        qInfo("%s", qPrintable(stale.mid(0, 20).join("\n")));
    }
    return shows;
}

void ShownFolderFixture::open(MPanel* which, const QString& relative) const
{
    QString path = dir->path();
    for (const QString& name : relative.split('/')) {
        path += '/' + name;
        QVERIFY(waitForTreeRow(which, path));
        which->tree->expand(which->treeModel->index(path));
        which->setTreePath(path);
    }
    QCOMPARE(which->currentPath, path);
    QVERIFY(showsTheDisk(which, path));
}

void ShownFolderFixture::runOperation(const QString& operation) const
{
    BoxAnswers boxes;
    boxes.otherwise({"Yes"});
    ModalAnswers dialogs;
    const QString shown = dir->path(QStringLiteral("a/b/shown"));
    panel->list->setFocus();
    panel->list->selectionModel()->select(listIndex(panel, QStringLiteral("f")),
        QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    const auto typeName = [](const QString& name) {
        return [name](QDialog* dialog) {
            for (QLineEdit* field : dialog->findChildren<QLineEdit*>()) {
                if (!field->isReadOnly()) {
                    field->setText(name);
                    QTest::keyClick(field, Qt::Key_Return);
                }
            }
        };
    };
    gslDragList = QStringList{shown + "/f"};
    gsDropBase = dir->path(QStringLiteral("to"));
    if (operation == "copy") {
        panel->DoAction(CommandDropCopy, QString(), QString());
    } else if (operation == "move") {
        panel->DoAction(CommandDropMove, QString(), QString());
    } else if (operation == "delete") {
        panel->DoAction(CommandDelete, QString(), QString());
    } else if (operation == "rename") {
        dialogs.meet<QDialog>(typeName(QStringLiteral("new name")));
        panel->DoAction(CommandRename, shown + "/f", QString());
    } else {
        dialogs.meet<QDialog>(typeName(QStringLiteral("new folder")));
        panel->DoAction(CommandNewDir, QString(), QString());
    }
}
