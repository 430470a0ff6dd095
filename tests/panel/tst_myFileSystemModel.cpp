#include "panel/myFileSystemModel.h"

#include "app/TextHelpers.h"
#include "panel/MList.h"
#include "panel/MPanel.h"
#include "panel/MTree.h"
#include "tests/support/AsNobody.h"
#include "tests/support/PanelWindow.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QAbstractItemModelTester>
#include <QCommonStyle>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QPointer>
#include <QSignalSpy>
#include <QThreadPool>

#include <memory>
#include <unistd.h>

namespace {

const QDir::Filters listFilter = QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDot;
const QDir::Filters treeFilter = QDir::AllDirs | QDir::Hidden | QDir::NoSymLinks | QDir::NoDotAndDotDot;

QImage picture(const QVariant& icon)
{
    return icon.value<QIcon>().pixmap(16, 16).toImage();
}

QStringList rowNames(const QFileSystemModel& model, const QModelIndex& parent)
{
    QStringList names;
    for (int row = 0; row < model.rowCount(parent); ++row) {
        names.append(model.fileName(model.index(row, 0, parent)));
    }
    return names;
}

QModelIndex rowOf(
    const QFileSystemModel& model, const QModelIndex& parent, const QString& name, int column = 0)
{
    const int row = rowNames(model, parent).indexOf(name);
    return row < 0 ? QModelIndex() : model.index(row, column, parent);
}

/// Row order of a model that nobody has changed anything of.
QStringList stockOrder(const QString& path, int column, Qt::SortOrder order)
{
    QFileSystemModel model;
    model.setFilter(listFilter);
    QSignalSpy loaded(&model, &QFileSystemModel::directoryLoaded);
    const QModelIndex root = model.setRootPath(path);
    if (!loaded.wait()) {
        return QStringList();
    }
    model.sort(column, order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder);
    model.sort(column, order);
    return rowNames(model, root);
}

} // namespace

class TestmyFileSystemModel : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void header_data();
    void header();
    void headerOfOneColumn();
    void columnCountIsTheBases();

    void invalidIndex_data();
    void invalidIndex();
    void outsideTheRoot_data();
    void outsideTheRoot();
    void rootTextAnywhereCounts();
    void rootTextIsCaseSensitive();
    void alignment();
    void sizes_data();
    void sizes();
    void owner_data();
    void owner();
    void ownerWithoutName();
    void modified_data();
    void modified();
    void columnsBeyond();
    void namesAsTheyAre_data();
    void namesAsTheyAre();
    void otherRolesAreTheBases();

    void currentFolderIsOpen();
    void linksHaveTheLinkIcon();
    void linkThatIsCurrent();
    void otherIconsAreTheBases();
    void decorationOfOtherColumns();

    void stats();
    void statsOfNothing_data();
    void statsOfNothing();
    void statsAskNotTheDisk();
    void statsOfALink();

    void loadsInTheStockOrder_data();
    void loadsInTheStockOrder();
    void sortsLikeTheStockModel_data();
    void sortsLikeTheStockModel();
    void rowsThatComeLaterAreSorted();
    void bigFolderComesWhole();
    void retired_data();
    void retired();

    void changesShow_data();
    void changesShow();
    void sizeAloneShows();
    void manyChangesAtOnce();
    void emptiedAndFilledAgain();
    void foldersAboveAreNotLoaded();
    void parentRowIsNotLoaded();
    void treeShowsRealFoldersOnly();
    void treeFollowsSubfolders();
    void removedSubfolderDoesNotLoseOtherReadings();
    void readingOfAFolderThatIsGoneAlready();
    void rootGone();
    void entriesGoneComesFirst();
    void manyRemovalsAskForANewModel();
    void manyRemovalsWithoutListener();
    void refreshShowsUnseenChanges();
    void unreadableFolder();
    void testerOnTree();

private:
    myFileSystemModel* load(const QString& path, QDir::Filters filter = listFilter, int columns = 4);
    void checkRules();
    QModelIndex row(const QString& name, int column = 0) const;
    QVariant text(const QString& name, int column = 0) const { return row(name, column).data(); }

    std::unique_ptr<TestDir> dir;
    std::unique_ptr<PanelWindow> window;
    MPanel* panel = nullptr;
    myFileSystemModel* model = nullptr;
    QPersistentModelIndex root;
};

void TestmyFileSystemModel::init()
{
    dir = std::make_unique<TestDir>();
    window = std::make_unique<PanelWindow>(dir->path());
    panel = window->panel;
    panel->rootPath = QStringLiteral("/");
}

void TestmyFileSystemModel::cleanup()
{
    root = QPersistentModelIndex();
    model = nullptr;
    window.reset();
    dir.reset();
}

/// Loads a folder into a model of its own.
myFileSystemModel* TestmyFileSystemModel::load(const QString& path, QDir::Filters filter, int columns)
{
    model = new myFileSystemModel(panel);
    model->setFilter(filter);
    model->setColumns(columns);
    QSignalSpy loaded(model, &QFileSystemModel::directoryLoaded);
    root = model->setRootPath(path);
    if (QFileInfo(path).isDir() && loaded.isEmpty()) {
        loaded.wait();
    }
    return model;
}

/// Checks each change of the model from now on. Every folder below its root is loaded by that.
void TestmyFileSystemModel::checkRules()
{
    new QAbstractItemModelTester(model, QAbstractItemModelTester::FailureReportingMode::QtTest, model);
}

QModelIndex TestmyFileSystemModel::row(const QString& name, int column) const
{
    return rowOf(*model, root, name, column);
}

void TestmyFileSystemModel::header_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<int>("section");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("role");
    QTest::addColumn<QVariant>("expected");
    const QStringList names{"Name", "Size", "Owner", "Modified"};
    for (int section = 0; section < 4; ++section) {
        const QByteArray name = names.at(section).toLatin1();
        QTest::newRow(name + " text")
            << 4 << section << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(names.at(section));
        QTest::newRow(name + " alignment")
            << 4 << section << int(Qt::Horizontal) << int(Qt::TextAlignmentRole)
            << QVariant(int(section == 0 ? Qt::AlignLeft : Qt::AlignRight));
        QTest::newRow(name + " vertical")
            << 4 << section << int(Qt::Vertical) << int(Qt::DisplayRole) << QVariant();
        QTest::newRow(name + " vertical alignment")
            << 4 << section << int(Qt::Vertical) << int(Qt::TextAlignmentRole) << QVariant();
        QTest::newRow(name + " decoration")
            << 4 << section << int(Qt::Horizontal) << int(Qt::DecorationRole) << QVariant();
        QTest::newRow(name + " tool tip")
            << 4 << section << int(Qt::Horizontal) << int(Qt::ToolTipRole) << QVariant();
        QTest::newRow(name + " no columns")
            << 0 << section << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    }
    QTest::newRow("beyond") << 4 << 4 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("beyond alignment")
        << 4 << 4 << int(Qt::Horizontal) << int(Qt::TextAlignmentRole) << QVariant();
    QTest::newRow("two columns, third")
        << 2 << 2 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("two columns, second")
        << 2 << 1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant(QStringLiteral("Size"));
    QTest::newRow("negative") << 4 << -1 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
    QTest::newRow("fifth of five") << 5 << 4 << int(Qt::Horizontal) << int(Qt::DisplayRole) << QVariant();
}

void TestmyFileSystemModel::header()
{
    QFETCH(int, columns);
    QFETCH(int, section);
    QFETCH(int, orientation);
    QFETCH(int, role);
    QFETCH(QVariant, expected);
    myFileSystemModel fresh(panel);
    fresh.setColumns(columns);
    const QVariant got = fresh.headerData(section, static_cast<Qt::Orientation>(orientation), role);
    QCOMPARE(got.isValid(), expected.isValid());
    if (role == Qt::TextAlignmentRole) {
        QCOMPARE(got.toInt(), expected.toInt());
    } else {
        QCOMPARE(got, expected);
    }
}

void TestmyFileSystemModel::headerOfOneColumn()
{
    QCOMPARE(
        panel->treeModel->headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), QStringLiteral("Name"));
    for (int section = 1; section < 4; ++section) {
        QVERIFY(!panel->treeModel->headerData(section, Qt::Horizontal, Qt::DisplayRole).isValid());
        QVERIFY(!panel->treeModel->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole).isValid());
    }
}

void TestmyFileSystemModel::columnCountIsTheBases()
{
    load(dir->path(), treeFilter, 1);
    QCOMPARE(model->columnCount(root), 4);
    QCOMPARE(model->columnCount(QModelIndex()), 4);
}

void TestmyFileSystemModel::invalidIndex_data()
{
    QTest::addColumn<int>("role");
    for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::TextAlignmentRole),
             int(Qt::EditRole), int(Qt::ToolTipRole), int(QFileSystemModel::FilePathRole)}) {
        QTest::newRow(("role " + QByteArray::number(role)).constData()) << role;
    }
}

void TestmyFileSystemModel::invalidIndex()
{
    QFETCH(int, role);
    const QVariant got = panel->listModel->data(QModelIndex(), role);
    QCOMPARE(got.userType(), int(QMetaType::QString));
    QCOMPARE(got.toString(), QString());
}

void TestmyFileSystemModel::outsideTheRoot_data()
{
    QTest::addColumn<int>("role");
    for (const int role : {int(Qt::DisplayRole), int(Qt::DecorationRole), int(Qt::TextAlignmentRole),
             int(Qt::EditRole), int(QFileSystemModel::FilePathRole)}) {
        QTest::newRow(("role " + QByteArray::number(role)).constData()) << role;
    }
}

void TestmyFileSystemModel::outsideTheRoot()
{
    QFETCH(int, role);
    dir->file(QStringLiteral("inside/file"));
    dir->file(QStringLiteral("outside"), "123");
    load(dir->path());
    panel->rootPath = dir->path(QStringLiteral("inside"));
    for (int column = 0; column < 4; ++column) {
        const QVariant got = model->data(row(QStringLiteral("outside"), column), role);
        QCOMPARE(got.userType(), int(QMetaType::QString));
        QCOMPARE(got.toString(), QString());
    }
    QCOMPARE(text(QStringLiteral("inside")).toString(), QStringLiteral("inside"));
}

void TestmyFileSystemModel::rootTextAnywhereCounts()
{
    dir->file(QStringLiteral("sub/file"));
    dir->file(QStringLiteral("other"));
    load(dir->path());
    panel->rootPath = QStringLiteral("/sub");
    QCOMPARE(text(QStringLiteral("sub")).toString(), QStringLiteral("sub"));
    QCOMPARE(text(QStringLiteral("other")).toString(), QString());
}

void TestmyFileSystemModel::rootTextIsCaseSensitive()
{
    dir->file(QStringLiteral("Sub/file"));
    load(dir->path());
    panel->rootPath = dir->path(QStringLiteral("sub"));
    QCOMPARE(text(QStringLiteral("Sub")).toString(), QString());
    panel->rootPath = dir->path(QStringLiteral("Sub"));
    QCOMPARE(text(QStringLiteral("Sub")).toString(), QStringLiteral("Sub"));
}

void TestmyFileSystemModel::alignment()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    const int expected[] = {Qt::AlignLeft, Qt::AlignRight, Qt::AlignRight, Qt::AlignRight};
    for (int column = 0; column < 4; ++column) {
        QCOMPARE(row(QStringLiteral("file"), column).data(Qt::TextAlignmentRole).toInt(), expected[column]);
    }
    model->setColumns(1);
    QCOMPARE(row(QStringLiteral("file"), 3).data(Qt::TextAlignmentRole).toInt(), int(Qt::AlignRight));
}

void TestmyFileSystemModel::sizes_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("empty") << qint64(0) << QStringLiteral("0");
    QTest::newRow("one") << qint64(1) << QStringLiteral("1");
    QTest::newRow("999") << qint64(999) << QStringLiteral("999");
    QTest::newRow("1000") << qint64(1000) << QStringLiteral("1,000");
    QTest::newRow("millions") << qint64(1234567) << QStringLiteral("1,234,567");
    QTest::newRow("beyond 32 bits") << (qint64(1) << 32) << QStringLiteral("4,294,967,296");
    QTest::newRow("8 TB") << qint64(8796093022207) << QStringLiteral("8,796,093,022,207");
}

void TestmyFileSystemModel::sizes()
{
    QFETCH(qint64, bytes);
    QFETCH(QString, expected);
    dir->sparseFile(QStringLiteral("file"), bytes);
    dir->folder(QStringLiteral("folder"));
    QLocale::setDefault(QLocale(QLocale::German));
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 1).toString(), expected);
    QCOMPARE(text(QStringLiteral("folder"), 1).toString(), QStringLiteral("0"));
    QLocale::setDefault(QLocale::c());
}

void TestmyFileSystemModel::owner_data()
{
    QTest::addColumn<unsigned>("mode");
    QTest::addColumn<QString>("digits");
    QTest::newRow("644") << 0644U << QStringLiteral("644");
    QTest::newRow("755") << 0755U << QStringLiteral("755");
    QTest::newRow("004") << 0004U << QStringLiteral("004");
    QTest::newRow("000") << 0000U << QStringLiteral("000");
    QTest::newRow("777") << 0777U << QStringLiteral("777");
    QTest::newRow("set-uid is left out") << 04755U << QStringLiteral("755");
}

void TestmyFileSystemModel::owner()
{
    QFETCH(unsigned, mode);
    QFETCH(QString, digits);
    const QString path = dir->file(QStringLiteral("file"), "x", mode);
    load(dir->path());
    const QString name = QFileInfo(dir->path()).owner();
    QVERIFY(!name.isEmpty());
    QCOMPARE(text(QStringLiteral("file"), 2).toString(), name + QLatin1Char(' ') + digits);
    QCOMPARE(digits, xs_formatPermisions(QFileInfo(path)));
}

void TestmyFileSystemModel::ownerWithoutName()
{
    const QString path = dir->file(QStringLiteral("file"), "x", 0640);
    if (::chown(QFile::encodeName(path).constData(), 54321, 54321) != 0) {
        QSKIP("only the superuser can give files away");
    }
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 2).toString(), QFileInfo(path).owner() + QStringLiteral(" 640"));
}

void TestmyFileSystemModel::modified_data()
{
    QTest::addColumn<qint64>("seconds");
    QTest::addColumn<QString>("expected");
    QTest::newRow("first minute") << qint64(1) << QStringLiteral("1970-01-01 00:00");
    QTest::newRow("afternoon") << qint64(1000000000) << QStringLiteral("2001-09-09 01:46");
    QTest::newRow("last second of a year") << qint64(1704067199) << QStringLiteral("2023-12-31 23:59");
    QTest::newRow("beyond 2038") << qint64(4102444800) << QStringLiteral("2100-01-01 00:00");
    QTest::newRow("before the epoch") << qint64(-86400) << QStringLiteral("1969-12-31 00:00");
}

void TestmyFileSystemModel::modified()
{
    QFETCH(qint64, seconds);
    QFETCH(QString, expected);
    dir->file(QStringLiteral("file"));
    dir->folder(QStringLiteral("folder"));
    dir->setTimes(QStringLiteral("file"), seconds);
    dir->setTimes(QStringLiteral("folder"), seconds);
    load(dir->path());
    QCOMPARE(text(QStringLiteral("file"), 3).toString(), expected);
    QCOMPARE(text(QStringLiteral("folder"), 3).toString(), expected);
}

void TestmyFileSystemModel::columnsBeyond()
{
    dir->file(QStringLiteral("file"), "123");
    load(dir->path(), listFilter, 1);
    QCOMPARE(text(QStringLiteral("file"), 0).toString(), QStringLiteral("file"));
    for (int column = 1; column < 4; ++column) {
        QVERIFY(!text(QStringLiteral("file"), column).isValid());
    }
    model->setColumns(2);
    QCOMPARE(text(QStringLiteral("file"), 1).toString(), QStringLiteral("3"));
    QVERIFY(!text(QStringLiteral("file"), 2).isValid());
    model->setColumns(0);
    QVERIFY(!text(QStringLiteral("file"), 0).isValid());
}

void TestmyFileSystemModel::namesAsTheyAre_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("placeholder") << QStringLiteral("%1 %2 %n");
    QTest::newRow("markup") << QStringLiteral("<b>x<b>");
    QTest::newRow("newline") << QStringLiteral("a\nb");
    QTest::newRow("tab and bell") << QStringLiteral("a\tb\a");
    QTest::newRow("255 bytes") << QString(255, QLatin1Char('z'));
    QTest::newRow("255 bytes of two each") << QString(127, QChar(0xe4)) + QLatin1Char('x');
    QTest::newRow("beyond the basic plane") << QString::fromUtf8("😀");
    QTest::newRow("blanks") << QStringLiteral("  two  ");
    QTest::newRow("three dots") << QStringLiteral("...");
    QTest::newRow("ampersand") << QStringLiteral("a&b");
    QTest::newRow("backslash") << QStringLiteral("a\\b");
    QTest::newRow("quotes") << QStringLiteral("\"a' `b`");
    QTest::newRow("hidden") << QStringLiteral(".hidden");
    QTest::newRow("like the parent") << QStringLiteral("..x");
}

void TestmyFileSystemModel::namesAsTheyAre()
{
    QFETCH(QString, name);
    dir->file(name, "12");
    load(dir->path());
    QCOMPARE(model->rowCount(root), 2);
    QCOMPARE(text(name).toString(), name);
    QCOMPARE(text(name, 1).toString(), QStringLiteral("2"));
    QCOMPARE(model->filePath(row(name)), dir->path(name));
}

void TestmyFileSystemModel::otherRolesAreTheBases()
{
    const QString path = dir->file(QStringLiteral("file"));
    load(dir->path());
    const QModelIndex index = row(QStringLiteral("file"));
    for (const int role :
        {int(Qt::EditRole), int(QFileSystemModel::FilePathRole), int(QFileSystemModel::FileNameRole),
            int(Qt::ToolTipRole), int(Qt::CheckStateRole), int(QFileSystemModel::FilePermissions)}) {
        QCOMPARE(index.data(role), model->QFileSystemModel::data(index, role));
    }
    QCOMPARE(index.data(Qt::EditRole).toString(), QStringLiteral("file"));
    QCOMPARE(index.data(QFileSystemModel::FilePathRole).toString(), path);
}

void TestmyFileSystemModel::currentFolderIsOpen()
{
    QIcon::setThemeSearchPaths({dir->path(QStringLiteral("themes"))});
    dir->file(QStringLiteral("themes/t/index.theme"),
        "[Icon Theme]\nName=t\nDirectories=16\n[16]\nSize=16\nType=Fixed\n");
    dir->folder(QStringLiteral("themes/t/16"));
    QImage image(16, 16, QImage::Format_RGB32);
    image.fill(Qt::magenta);
    QVERIFY(image.save(dir->path(QStringLiteral("themes/t/16/folder-open.png"))));
    QIcon::setThemeName(QStringLiteral("t"));
    dir->folder(QStringLiteral("one"));
    dir->folder(QStringLiteral("two"));
    load(dir->path(), treeFilter, 1);
    panel->currentTreeIndex = row(QStringLiteral("one"));
    QCOMPARE(
        picture(row(QStringLiteral("one")).data(Qt::DecorationRole)).pixelColor(8, 8), QColor(Qt::magenta));
    QVERIFY(
        picture(row(QStringLiteral("two")).data(Qt::DecorationRole)).pixelColor(8, 8) != QColor(Qt::magenta));
    panel->currentTreeIndex = row(QStringLiteral("two"));
    QVERIFY(
        picture(row(QStringLiteral("one")).data(Qt::DecorationRole)).pixelColor(8, 8) != QColor(Qt::magenta));
    // The same folder of another model is another index.
    QCOMPARE(
        panel->treeModel->index(dir->path(QStringLiteral("two"))).data().toString(), QStringLiteral("two"));
    QVERIFY(picture(panel->treeModel->index(dir->path(QStringLiteral("two"))).data(Qt::DecorationRole))
                .pixelColor(8, 8)
        != QColor(Qt::magenta));
    QIcon::setThemeName(QStringLiteral("none"));
}

void TestmyFileSystemModel::linksHaveTheLinkIcon()
{
    dir->folder(QStringLiteral("folder"));
    dir->file(QStringLiteral("file"));
    dir->link(QStringLiteral("to folder"), QStringLiteral("folder"));
    dir->link(QStringLiteral("to file"), QStringLiteral("file"));
    dir->link(QStringLiteral("to nothing"), QStringLiteral("nowhere"));
    dir->link(QStringLiteral("to link"), QStringLiteral("to file"));
    load(dir->path());
    const QImage expected = picture(QCommonStyle().standardIcon(QStyle::SP_CommandLink));
    QVERIFY(!expected.isNull());
    for (const char* name : {"to folder", "to file", "to nothing", "to link"}) {
        QCOMPARE(picture(row(QLatin1String(name)).data(Qt::DecorationRole)), expected);
    }
    QVERIFY(picture(row(QStringLiteral("file")).data(Qt::DecorationRole)) != expected);
    QVERIFY(picture(row(QStringLiteral("folder")).data(Qt::DecorationRole)) != expected);
}

void TestmyFileSystemModel::linkThatIsCurrent()
{
    dir->folder(QStringLiteral("folder"));
    dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    load(dir->path());
    panel->currentTreeIndex = row(QStringLiteral("link"));
    QCOMPARE(picture(row(QStringLiteral("link")).data(Qt::DecorationRole)),
        picture(QIcon::fromTheme(QStringLiteral("folder-open"), QIcon())));
}

void TestmyFileSystemModel::otherIconsAreTheBases()
{
    dir->folder(QStringLiteral("folder"));
    for (const char* name : {"file", "a.txt", "b.png", ".hidden"}) {
        dir->file(QLatin1String(name));
    }
    QFileSystemModel stock;
    stock.setFilter(listFilter);
    QSignalSpy loaded(&stock, &QFileSystemModel::directoryLoaded);
    const QModelIndex stockRoot = stock.setRootPath(dir->path());
    QVERIFY(loaded.wait());
    load(dir->path());
    for (const char* name : {"folder", "file", "a.txt", "b.png", ".hidden", ".."}) {
        const QModelIndex index = row(QLatin1String(name));
        QVERIFY(!picture(index.data(Qt::DecorationRole)).isNull());
        QCOMPARE(picture(index.data(Qt::DecorationRole)),
            picture(rowOf(stock, stockRoot, QLatin1String(name)).data(Qt::DecorationRole)));
    }
}

void TestmyFileSystemModel::decorationOfOtherColumns()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    for (int column = 1; column < 4; ++column) {
        QVERIFY(!row(QStringLiteral("file"), column).data(Qt::DecorationRole).isValid());
    }
}

void TestmyFileSystemModel::stats()
{
    dir->file(QStringLiteral("a"), QByteArray(1000, 'x'));
    dir->file(QStringLiteral(".hidden"), QByteArray(500, 'x'));
    dir->folder(QStringLiteral("one"));
    dir->folder(QStringLiteral(".two"));
    dir->file(QStringLiteral("one/deeper"), QByteArray(9999, 'x'));
    dir->link(QStringLiteral("link"), QStringLiteral("a"));
    dir->link(QStringLiteral("link to folder"), QStringLiteral("one"));
    dir->link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    load(dir->path());
    qint64 dirs = -1;
    qint64 files = -1;
    qint64 bytes = -1;
    model->getFolderStats(dir->path(), dirs, files, bytes);
    QCOMPARE(dirs, 3); // a link to a folder counts as one
    QCOMPARE(files, 4);
    qint64 expected = 1000 + 500;
    for (const char* name : {"one", ".two", "link", "link to folder", "dangling"}) {
        expected += QFileInfo(dir->path(QLatin1String(name))).size();
    }
    QVERIFY(QFileInfo(dir->path(QStringLiteral("one"))).size() > 0);
    QCOMPARE(bytes, expected);
}

void TestmyFileSystemModel::statsOfNothing_data()
{
    QTest::addColumn<QString>("relative");
    QTest::newRow("only the parent's row") << QStringLiteral("empty");
    QTest::newRow("not loaded") << QStringLiteral("other");
    QTest::newRow("missing") << QStringLiteral("missing");
    QTest::newRow("file") << QStringLiteral("other/file");
}

void TestmyFileSystemModel::statsOfNothing()
{
    QFETCH(QString, relative);
    dir->folder(QStringLiteral("empty"));
    dir->file(QStringLiteral("other/file"), "123");
    load(dir->path(QStringLiteral("empty")));
    QCOMPARE(rowNames(*model, root), QStringList{".."});
    qint64 dirs = 5;
    qint64 files = 6;
    qint64 bytes = 7;
    model->getFolderStats(dir->path(relative), dirs, files, bytes);
    QCOMPARE(dirs, 0);
    QCOMPARE(files, 0);
    QCOMPARE(bytes, 0);
}

void TestmyFileSystemModel::statsAskNotTheDisk()
{
    dir->file(QStringLiteral("a"), "123");
    dir->file(QStringLiteral("b"), "123");
    load(dir->path());
    QVERIFY(QFile::remove(dir->path(QStringLiteral("b"))));
    qint64 dirs = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    model->getFolderStats(dir->path(), dirs, files, bytes);
    QCOMPARE(files, 2);
    QCOMPARE(bytes, 6);
}

void TestmyFileSystemModel::statsOfALink()
{
    dir->file(QStringLiteral("folder/a"), "12345");
    const QString link = dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    load(link);
    qint64 dirs = 0;
    qint64 files = 0;
    qint64 bytes = 0;
    model->getFolderStats(link, dirs, files, bytes);
    QCOMPARE(files, 1);
    QCOMPARE(bytes, 5);
}

void TestmyFileSystemModel::loadsInTheStockOrder_data()
{
    QTest::addColumn<QString>("locale");
    QTest::newRow("C") << QStringLiteral("C");
    QTest::newRow("en_US") << QStringLiteral("en_US");
    QTest::newRow("de_DE") << QStringLiteral("de_DE");
}

void TestmyFileSystemModel::loadsInTheStockOrder()
{
    QFETCH(QString, locale);
    QLocale::setDefault(locale == QLatin1String("C") ? QLocale::c() : QLocale(locale));
    for (const char* name :
        {"file1", "file10", "file2", "Zeta", "alpha", ".hidden", "_x", "a b", "a-b", "\xc3\xa4"}) {
        dir->file(QString::fromUtf8(name));
    }
    dir->folder(QStringLiteral("zz"));
    dir->folder(QStringLiteral("Folder 10"));
    dir->folder(QStringLiteral("folder 9"));
    load(dir->path());
    QCOMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
    QLocale::setDefault(QLocale::c());
}

void TestmyFileSystemModel::sortsLikeTheStockModel_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("order");
    const char* names[] = {"name", "size", "column 2", "modified"};
    for (const int column : {0, 1, 3}) {
        QTest::newRow(QByteArray(names[column]) + " ascending") << column << int(Qt::AscendingOrder);
        QTest::newRow(QByteArray(names[column]) + " descending") << column << int(Qt::DescendingOrder);
    }
}

void TestmyFileSystemModel::sortsLikeTheStockModel()
{
    QFETCH(int, column);
    QFETCH(int, order);
    for (int i = 0; i < 30; ++i) {
        const QString name = QStringLiteral("f%1").arg((i * 7) % 30);
        dir->file(name, QByteArray(10 + (i * 11) % 30, 'x'));
        dir->setTimes(name, 1000000 + 100 * ((i * 13) % 30));
    }
    dir->folder(QStringLiteral("sub"));
    dir->setTimes(QStringLiteral("sub"), 5);
    load(dir->path());
    model->sort(column, static_cast<Qt::SortOrder>(order));
    QStringList got = rowNames(*model, root);
    QStringList expected = stockOrder(dir->path(), column, static_cast<Qt::SortOrder>(order));
    QCOMPARE(got.size(), 32);
    // Both folders have no size: which comes first is an accident.
    for (QStringList* names : {&got, &expected}) {
        if (column == 1) {
            names->removeAll(QStringLiteral("sub"));
        }
    }
    QCOMPARE(got, expected);
    // The same from every other order, the way that header clicks go.
    for (const int before : {0, 1, 3}) {
        model->sort(before, order == Qt::AscendingOrder ? Qt::DescendingOrder : Qt::AscendingOrder);
        model->sort(column, static_cast<Qt::SortOrder>(order));
        got = rowNames(*model, root);
        if (column == 1) {
            got.removeAll(QStringLiteral("sub"));
        }
        QCOMPARE(got, expected);
    }
}

void TestmyFileSystemModel::rowsThatComeLaterAreSorted()
{
    dir->file(QStringLiteral("b"), "22");
    dir->file(QStringLiteral("d"), "1");
    load(dir->path());
    checkRules();
    dir->file(QStringLiteral("a"), "4444");
    dir->file(QStringLiteral("c"), "333");
    QTRY_COMPARE(rowNames(*model, root), (QStringList{"..", "a", "b", "c", "d"}));
    model->sort(1, Qt::DescendingOrder);
    const QStringList bySize = rowNames(*model, root);
    QCOMPARE(bySize.mid(bySize.indexOf(QStringLiteral("a"))).mid(0, 4), (QStringList{"a", "c", "b", "d"}));
    dir->file(QStringLiteral("d"), "7777777");
    QTRY_COMPARE(rowNames(*model, root).indexOf(QStringLiteral("d")) + 1,
        rowNames(*model, root).indexOf(QStringLiteral("a")));
    dir->file(QStringLiteral("e"), "55555");
    QTRY_COMPARE(rowNames(*model, root).mid(bySize.indexOf(QStringLiteral("a")), 5),
        (QStringList{"d", "e", "a", "c", "b"}));
}

void TestmyFileSystemModel::bigFolderComesWhole()
{
    dir->files(QStringLiteral("."), 3000, QStringLiteral("f%1"));
    dir->folder(QStringLiteral("folder"));
    load(dir->path());
    QCOMPARE(model->rowCount(root), 3002);
    QCOMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
}

void TestmyFileSystemModel::retired_data()
{
    QTest::addColumn<int>("files");
    QTest::addColumn<bool>("atOnce");
    QTest::newRow("few rows") << 10 << true;
    QTest::newRow("as many as are freed at once") << 4999 << true; // and ".."
    QTest::newRow("one more") << 5000 << false;
}

void TestmyFileSystemModel::retired()
{
    QFETCH(int, files);
    QFETCH(bool, atOnce);
    dir->files(QStringLiteral("big"), files);
    load(dir->path(QStringLiteral("big")));
    QCOMPARE(model->rowCount(root), files + 1);
    root = QPersistentModelIndex();
    const QPointer<myFileSystemModel> retired = model;
    model->retire();
    QCOMPARE(retired.isNull(), atOnce);
    if (!atOnce) {
        QCOMPARE(retired->parent(), nullptr);
    }
    QTRY_VERIFY(retired.isNull());
    QThreadPool::globalInstance()->waitForDone();
}

void TestmyFileSystemModel::changesShow_data()
{
    QTest::addColumn<QString>("what");
    for (const char* what : {"made", "made folder", "made link", "removed", "renamed", "size", "mode", "time",
             "file becomes folder", "folder becomes file", "awkward names"}) {
        QTest::newRow(what) << QString::fromLatin1(what);
    }
}

void TestmyFileSystemModel::changesShow()
{
    QFETCH(QString, what);
    dir->file(QStringLiteral("file"), "123");
    dir->folder(QStringLiteral("folder"));
    load(dir->path());
    checkRules();
    const auto names = [this] { return rowNames(*model, root); };
    const QString file = dir->path(QStringLiteral("file"));
    const QString folder = dir->path(QStringLiteral("folder"));
    if (what == QLatin1String("made")) {
        dir->file(QStringLiteral("new"), "12345");
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file", "new"}));
        QTRY_COMPARE(text(QStringLiteral("new"), 1).toString(), QStringLiteral("5"));
    } else if (what == QLatin1String("made folder")) {
        QVERIFY(QDir().mkdir(dir->path(QStringLiteral("new"))));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "new", "file"}));
    } else if (what == QLatin1String("made link")) {
        dir->link(QStringLiteral("new"), QStringLiteral("nowhere"));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file", "new"}));
    } else if (what == QLatin1String("removed")) {
        QVERIFY(QFile::remove(file));
        QTRY_COMPARE(names(), (QStringList{"..", "folder"}));
    } else if (what == QLatin1String("renamed")) {
        QVERIFY(QFile::rename(file, dir->path(QStringLiteral("a"))));
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "a"}));
    } else if (what == QLatin1String("size")) {
        dir->file(QStringLiteral("file"), QByteArray(12345, 'x'));
        QTRY_COMPARE(text(QStringLiteral("file"), 1).toString(), QStringLiteral("12,345"));
    } else if (what == QLatin1String("mode")) {
        dir->setMode(QStringLiteral("file"), 0600);
        QTRY_VERIFY(text(QStringLiteral("file"), 2).toString().endsWith(QLatin1String(" 600")));
    } else if (what == QLatin1String("time")) {
        dir->setTimes(QStringLiteral("file"), 1);
        QTRY_COMPARE(text(QStringLiteral("file"), 3).toString(), QStringLiteral("1970-01-01 00:00"));
    } else if (what == QLatin1String("file becomes folder")) {
        QVERIFY(QFile::remove(file) && QDir().mkdir(file));
        QTRY_VERIFY(model->isDir(row(QStringLiteral("file"))));
        QCOMPARE(names().size(), 3);
    } else if (what == QLatin1String("folder becomes file")) {
        QVERIFY(QDir().rmdir(folder));
        dir->file(QStringLiteral("folder"), "1234");
        QTRY_COMPARE(text(QStringLiteral("folder"), 1).toString(), QStringLiteral("4"));
        QVERIFY(!model->isDir(row(QStringLiteral("folder"))));
    } else {
        for (const char* name : {"%1", "<b>", "a\nb"}) {
            dir->file(QLatin1String(name));
        }
        QTRY_COMPARE(model->rowCount(root), 6);
        for (const char* name : {"%1", "<b>", "a\nb"}) {
            QVERIFY(QFile::remove(dir->path(QLatin1String(name))));
        }
        QTRY_COMPARE(names(), (QStringList{"..", "folder", "file"}));
    }
}

void TestmyFileSystemModel::sizeAloneShows()
{
    dir->file(QStringLiteral("file"), "123");
    dir->setTimes(QStringLiteral("file"), 1000);
    load(dir->path());
    checkRules();
    for (int size = 4; size < 7; ++size) {
        dir->file(QStringLiteral("file"), QByteArray(size, 'x'));
        dir->setTimes(QStringLiteral("file"), 1000);
        QTRY_COMPARE(text(QStringLiteral("file"), 1).toString(), QString::number(size));
        QCOMPARE(text(QStringLiteral("file"), 3).toString(), QStringLiteral("1970-01-01 00:16"));
    }
}

void TestmyFileSystemModel::manyChangesAtOnce()
{
    dir->files(QStringLiteral("."), 300, QStringLiteral("f%1"));
    load(dir->path());
    for (int i = 0; i < 300; i += 2) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
        dir->file(QStringLiteral("g%1").arg(i), "1");
        dir->file(QStringLiteral("f%1").arg(i + 1), "22");
    }
    QTRY_COMPARE(rowNames(*model, root), stockOrder(dir->path(), 0, Qt::AscendingOrder));
    QTRY_COMPARE(text(QStringLiteral("f299"), 1).toString(), QStringLiteral("2"));
    QTRY_COMPARE(text(QStringLiteral("g298"), 1).toString(), QStringLiteral("1"));
}

void TestmyFileSystemModel::emptiedAndFilledAgain()
{
    load(dir->path());
    checkRules();
    QCOMPARE(rowNames(*model, root), QStringList{".."});
    for (int round = 0; round < 3; ++round) {
        dir->files(QStringLiteral("."), 40);
        QTRY_COMPARE(model->rowCount(root), 41);
        for (int i = 0; i < 40; ++i) {
            QVERIFY(QFile::remove(dir->path(QStringLiteral("file%1.txt").arg(i))));
        }
        QTRY_COMPARE(rowNames(*model, root), QStringList{".."});
    }
}

void TestmyFileSystemModel::foldersAboveAreNotLoaded()
{
    dir->file(QStringLiteral("a/b/file"));
    dir->folder(QStringLiteral("a/sibling"));
    load(dir->path(QStringLiteral("a/b")), treeFilter, 1);
    const QModelIndex above = model->index(dir->path(QStringLiteral("a")));
    QVERIFY(!model->canFetchMore(above));
    QVERIFY(!model->canFetchMore(model->index(dir->path())));
    QVERIFY(!model->canFetchMore(model->index(QStringLiteral("/"))));
    QVERIFY(!model->canFetchMore(QModelIndex()));
    model->fetchMore(above);
    dir->folder(QStringLiteral("a/b/later")); // is read later than the one above would be
    QTRY_COMPARE(rowNames(*model, root), QStringList{"later"});
    QCOMPARE(rowNames(*model, above), QStringList{"b"});
    // A name that only begins like the root's is above or beside it too.
    dir->folder(QStringLiteral("a/bc/d"));
    QVERIFY(!model->canFetchMore(model->index(dir->path(QStringLiteral("a/bc")))));
}

void TestmyFileSystemModel::parentRowIsNotLoaded()
{
    load(dir->folder(QStringLiteral("sub")));
    QVERIFY(model->isDir(row(QStringLiteral(".."))));
    QVERIFY(!model->canFetchMore(row(QStringLiteral(".."))));
}

void TestmyFileSystemModel::treeShowsRealFoldersOnly()
{
    dir->file(QStringLiteral("file"));
    dir->folder(QStringLiteral("folder"));
    dir->folder(QStringLiteral(".hidden"));
    dir->link(QStringLiteral("link"), QStringLiteral("folder"));
    dir->link(QStringLiteral("dangling"), QStringLiteral("nowhere"));
    load(dir->path(), treeFilter, 1);
    QCOMPARE(rowNames(*model, root), (QStringList{".hidden", "folder"}));
}

void TestmyFileSystemModel::treeFollowsSubfolders()
{
    dir->folder(QStringLiteral("a/b"));
    load(dir->path(), treeFilter, 1);
    const QPersistentModelIndex a = row(QStringLiteral("a"));
    QVERIFY(model->canFetchMore(a));
    model->fetchMore(a);
    QVERIFY(!model->canFetchMore(a));
    QTRY_COMPARE(rowNames(*model, a), QStringList{"b"});
    QVERIFY(QDir().mkdir(dir->path(QStringLiteral("a/c"))));
    QTRY_COMPARE(rowNames(*model, a), (QStringList{"b", "c"}));
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("a/b"))));
    QTRY_COMPARE(rowNames(*model, a), QStringList{"c"});
    QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    QTRY_COMPARE(rowNames(*model, root), QStringList());
    // A folder of the same name is a new one.
    QVERIFY(QDir().mkpath(dir->path(QStringLiteral("a/d"))));
    QTRY_COMPARE(rowNames(*model, root), QStringList{"a"});
    QTRY_VERIFY(model->canFetchMore(row(QStringLiteral("a"))));
    model->fetchMore(row(QStringLiteral("a")));
    QTRY_COMPARE(rowNames(*model, row(QStringLiteral("a"))), QStringList{"d"});
}

// A folder goes while rows of another one are still on their way.
void TestmyFileSystemModel::removedSubfolderDoesNotLoseOtherReadings()
{
    dir->folder(QStringLiteral("a"));
    dir->folder(QStringLiteral("b"));
    load(dir->path(), treeFilter, 1);
    const QPersistentModelIndex b = row(QStringLiteral("b"));
    FolderReading waiting;
    waiting.folder = dir->path(QStringLiteral("b"));
    waiting.exists = true;
    waiting.first = true;
    const QFileInfo sub(dir->folder(QStringLiteral("b/sub")));
    QVERIFY(sub.isDir());
    waiting.entries.append(qMakePair(QStringLiteral("sub"), sub));
    waiting.changed = waiting.entries;
    FolderReading gone;
    gone.folder = dir->path(QStringLiteral("a"));
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, waiting)));
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, gone)));
    QTRY_COMPARE(rowNames(*model, b), QStringList{"sub"});
}

void TestmyFileSystemModel::readingOfAFolderThatIsGoneAlready()
{
    dir->file(QStringLiteral("file"));
    load(dir->path());
    FolderReading gone;
    gone.folder = dir->path(QStringLiteral("never there"));
    QSignalSpy rootGone(model, &myFileSystemModel::rootGone);
    QVERIFY(QMetaObject::invokeMethod(model, "takeReading", Q_ARG(FolderReading, gone)));
    QVERIFY(root.isValid());
    QCOMPARE(rowNames(*model, root), (QStringList{"..", "file"}));
    QVERIFY(rootGone.isEmpty());
}

void TestmyFileSystemModel::rootGone()
{
    dir->file(QStringLiteral("it/file"));
    load(dir->path(QStringLiteral("it")));
    QSignalSpy gone(model, &myFileSystemModel::rootGone);
    QSignalSpy loaded(model, &QFileSystemModel::directoryLoaded);
    QVERIFY(QDir(dir->path(QStringLiteral("it"))).removeRecursively());
    QTRY_COMPARE(gone.size(), 1);
    QCOMPARE(gone.constFirst().constFirst().toString(), dir->path(QStringLiteral("it")));
    QCOMPARE(loaded.constLast().constFirst().toString(), dir->path(QStringLiteral("it")));
    QCOMPARE(model->rowCount(root), 0);
}

void TestmyFileSystemModel::entriesGoneComesFirst()
{
    dir->folder(QStringLiteral("a"));
    dir->folder(QStringLiteral("b"));
    load(dir->path(), treeFilter, 1);
    int rowsThen = -1;
    QStringList names;
    QString folder;
    connect(
        model, &myFileSystemModel::entriesGone, this, [&](const QString& where, const QStringList& which) {
            rowsThen = model->rowCount(root);
            names = which;
            folder = where;
        });
    QVERIFY(QDir().rmdir(dir->path(QStringLiteral("a"))));
    QTRY_COMPARE(rowNames(*model, root), QStringList{"b"});
    QCOMPARE(rowsThen, 2);
    QCOMPARE(names, QStringList{"a"});
    QCOMPARE(folder, dir->path());
}

void TestmyFileSystemModel::manyRemovalsAskForANewModel()
{
    dir->files(QStringLiteral("."), 4000, QStringLiteral("f%1"));
    load(dir->path());
    QSignalSpy wanted(model, &myFileSystemModel::reloadWanted);
    for (int i = 0; i < 3990; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
    }
    QTRY_VERIFY(!wanted.isEmpty());
}

void TestmyFileSystemModel::manyRemovalsWithoutListener()
{
    dir->files(QStringLiteral("."), 4000, QStringLiteral("f%1"));
    load(dir->path());
    for (int i = 0; i < 3990; ++i) {
        QVERIFY(QFile::remove(dir->path(QStringLiteral("f%1").arg(i))));
    }
    QTRY_COMPARE(model->rowCount(root), 11);
}

void TestmyFileSystemModel::refreshShowsUnseenChanges()
{
    dir->file(QStringLiteral("one/old"));
    dir->file(QStringLiteral("two/new"));
    const QString link = dir->link(QStringLiteral("link"), QStringLiteral("one"));
    load(link);
    QVERIFY(QFile::remove(link));
    dir->link(QStringLiteral("link"), QStringLiteral("two"));
    model->refresh();
    QTRY_COMPARE(rowNames(*model, root), (QStringList{"..", "new"}));
}

void TestmyFileSystemModel::unreadableFolder()
{
    dir->setMode(QString(), 0755);
    dir->file(QStringLiteral("it/file"));
    dir->setMode(QStringLiteral("it"), 0700);
    QStringList names{"not asked"};
    {
        const AsNobody nobody;
        load(dir->path(QStringLiteral("it")));
        QTRY_VERIFY(model->rowCount(root) > 0 || !model->canFetchMore(root));
        names = rowNames(*model, root);
    }
    QVERIFY2(names.isEmpty() || names == QStringList{".."}, qPrintable(names.join(QLatin1Char(' '))));
}

void TestmyFileSystemModel::testerOnTree()
{
    for (const char* name : {"a/b/c", "a/d", "e"}) {
        dir->folder(QLatin1String(name));
    }
    panel->setTreeRoot(dir->path());
    panel->rootPath = QStringLiteral("/"); // the tester takes blank items for faults
    const QAbstractItemModelTester tester(
        panel->treeModel, QAbstractItemModelTester::FailureReportingMode::QtTest);
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
    panel->tree->expandAll();
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b"))));
    panel->tree->expandAll();
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/c"))));
    dir->folder(QStringLiteral("a/b/new"));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a/b/new"))));
    QVERIFY(QDir(dir->path(QStringLiteral("a"))).removeRecursively());
    QTRY_COMPARE(treeNames(panel), (QStringList{QFileInfo(dir->path()).fileName(), "e"}));
    dir->folder(QStringLiteral("a/x"));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("a"))));
}

VANTREL_TEST_MAIN(TestmyFileSystemModel)
#include "tst_myFileSystemModel.moc"
