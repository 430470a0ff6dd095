#include "tests/support/PanelWindow.h"

#include "app/aGlobal.h"
#include "panel/FolderReader.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/TestDir.h"

#include <QLabel>
#include <QSignalSpy>
#include <QTest>

namespace {

void resetSharedState()
{
    gstDrives.clear();
    gstMenu.clear();
    gmFileAssn.clear();
    gslDragList.clear();
    gsDragBase.clear();
    gsDropBase.clear();
    gsLastPath1.clear();
    gsLastPath2.clear();
    gwPanel1 = nullptr;
    gwPanel2 = nullptr;
}

} // namespace

PanelWindow::PanelWindow(const QString& root, const QSize& size)
{
    if (!root.isEmpty()) {
        gstDrives = {LSDRIVE{root, QStringLiteral("Drive")}};
    }
    window.resize(size);
    panel = new MPanel(&window);
    panel->setGeometry(0, 0, size.width(), size.height());
    window.show();
}

PanelWindow::~PanelWindow()
{
    delete panel;
    resetSharedState();
}

bool PanelWindow::activate()
{
    window.activateWindow();
    return QTest::qWaitForWindowActive(&window);
}

bool waitForList(const MPanel* panel)
{
    return QTest::qWaitFor([panel] {
        const QModelIndex root = panel->list->rootIndex();
        return panel->listModel->rowCount(root) > 0
            && panel->folderLabel->text().startsWith(panel->listModel->rootPath() + QStringLiteral(" has "));
    });
}

bool openFolder(MPanel* panel, const QString& path)
{
    panel->currentPath = path;
    panel->treeRowChanged(path);
    return waitForList(panel);
}

bool waitForTreeRow(const MPanel* panel, const QString& path)
{
    const QString parent = path.left(path.lastIndexOf(QLatin1Char('/')));
    return QTest::qWaitFor([&] {
        const QModelIndex folder = panel->treeModel->index(parent);
        for (int row = 0; row < panel->treeModel->rowCount(folder); ++row) {
            if (panel->treeModel->filePath(panel->treeModel->index(row, 0, folder)) == path) {
                return true;
            }
        }
        return false;
    });
}

bool readAnotherFolder()
{
    const TestDir dir;
    FolderReader reader(nullptr);
    QSignalSpy done(&reader, SIGNAL(readingDone(FolderReading)));
    reader.read(dir.folder(QStringLiteral("another")));
    return done.wait();
}

QStringList listNames(const MPanel* panel)
{
    QStringList names;
    const QModelIndex root = panel->list->rootIndex();
    for (int row = 0; row < panel->listModel->rowCount(root); ++row) {
        names.append(panel->listModel->index(row, 0, root).data().toString());
    }
    return names;
}

QModelIndex listIndex(const MPanel* panel, const QString& name, int column)
{
    const int row = listNames(panel).indexOf(name);
    return row < 0 ? QModelIndex() : panel->listModel->index(row, column, panel->list->rootIndex());
}

QString listText(const MPanel* panel, const QString& name, int column)
{
    const QModelIndex index = listIndex(panel, name, column);
    return index.isValid() ? index.data().toString() : QString();
}

QStringList treeNames(const MPanel* panel)
{
    QStringList names;
    QModelIndex index = panel->treeModel->index(0, 0, panel->tree->rootIndex());
    while (index.isValid()) {
        names.append(index.data().toString());
        index = panel->tree->indexBelow(index);
    }
    return names;
}
