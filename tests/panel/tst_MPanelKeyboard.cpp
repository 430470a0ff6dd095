#include "panel/MPanel.h"

#include "panel/MList.h"
#include "panel/MTree.h"
#include "panel/myFileSystemModel.h"
#include "tests/support/PanelFixture.h"
#include "tests/support/TestMain.h"

#include <QApplication>
#include <QDialog>
#include <QKeyEvent>
#include <QMessageBox>
#include <QTimer>

namespace {

/// Closes the dialogs that come up, and notes their class and window title.
class DialogNotes : public QObject
{
public:
    DialogNotes()
    {
        m_timer.callOnTimeout(this, [this] {
            if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
                classes.append(QString::fromLatin1(dialog->metaObject()->className()));
                if (const auto* box = qobject_cast<QMessageBox*>(dialog)) {
                    texts.append(box->text());
                }
                dialog->reject();
            }
        });
        m_timer.start(2);
    }

    QStringList classes;
    QStringList texts;

private:
    QTimer m_timer;
};

} // namespace

class TestMPanelKeyboard : public QObject, protected PanelFixture
{
    Q_OBJECT

private slots:
    void init();
    void cleanup() { end(); }

    void commandKeys_data();
    void commandKeys();
    void heldKeyIsOneCommand_data();
    void heldKeyIsOneCommand();
    void modifiersMeanNothing_data();
    void modifiersMeanNothing();
    void otherKeys_data();
    void otherKeys();
    void bothViewsAskThePanel_data();
    void bothViewsAskThePanel();
    void pathOfTheCommand_data();
    void pathOfTheCommand();
    void keyInTheTreeTakesTheListsSelection();
    void typeAhead();
    void arrowsMove();
    void executeStartsTheFile();

private:
    bool press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier);
};

void TestMPanelKeyboard::init()
{
    dir = std::make_unique<TestDir>();
    for (const char* name : {"alpha", "beta", "data"}) {
        dir->file(QLatin1String(name));
    }
    show(dir->path());
}

bool TestMPanelKeyboard::press(int key, Qt::KeyboardModifiers modifiers)
{
    QKeyEvent event(QEvent::KeyPress, key, modifiers);
    return panel->mykeyPressEvent(&event);
}

void TestMPanelKeyboard::commandKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("dialog");
    QTest::newRow("P properties") << int(Qt::Key_P) << QStringLiteral("MProperties");
    QTest::newRow("S totalsize") << int(Qt::Key_S) << QStringLiteral("DialogFileSize");
    QTest::newRow("N newdir") << int(Qt::Key_N) << QStringLiteral("DialogNewDir");
    QTest::newRow("R rename") << int(Qt::Key_R) << QStringLiteral("Rename");
    QTest::newRow("C copy") << int(Qt::Key_C) << QStringLiteral("MCopy");
    QTest::newRow("Delete") << int(Qt::Key_Delete) << QStringLiteral("QMessageBox");
    QTest::newRow("X execute") << int(Qt::Key_X) << QStringLiteral("QMessageBox");
}

void TestMPanelKeyboard::commandKeys()
{
    QFETCH(int, key);
    QFETCH(QString, dialog);
    select({"alpha"}); // not executable, so that its start fails
    DialogNotes notes;
    QVERIFY(press(key));
    QCOMPARE(notes.classes, QStringList{dialog});
}

void TestMPanelKeyboard::heldKeyIsOneCommand_data()
{
    commandKeys_data();
}

void TestMPanelKeyboard::heldKeyIsOneCommand()
{
    QFETCH(int, key);
    select({"alpha"});
    const DialogNotes notes;
    QKeyEvent repeated(QEvent::KeyPress, key, Qt::NoModifier, QString(), true);
    QVERIFY(panel->mykeyPressEvent(&repeated)); // taken all the same: it searches for no name either
    QCOMPARE(notes.classes, QStringList());
}

void TestMPanelKeyboard::modifiersMeanNothing_data()
{
    QTest::addColumn<int>("modifiers");
    QTest::newRow("Ctrl") << int(Qt::ControlModifier);
    QTest::newRow("Shift") << int(Qt::ShiftModifier);
    QTest::newRow("Alt") << int(Qt::AltModifier);
    QTest::newRow("all") << int(Qt::ControlModifier | Qt::ShiftModifier | Qt::AltModifier | Qt::MetaModifier);
}

void TestMPanelKeyboard::modifiersMeanNothing()
{
    QFETCH(int, modifiers);
    select({"alpha"});
    DialogNotes notes;
    QVERIFY(press(Qt::Key_C, static_cast<Qt::KeyboardModifiers>(modifiers)));
    QVERIFY(press(Qt::Key_R, static_cast<Qt::KeyboardModifiers>(modifiers)));
    QCOMPARE(notes.classes, (QStringList{"MCopy", "Rename"}));
    QVERIFY(!press(Qt::Key_D, static_cast<Qt::KeyboardModifiers>(modifiers)));
}

void TestMPanelKeyboard::otherKeys_data()
{
    QTest::addColumn<int>("key");
    for (int key = Qt::Key_A; key <= Qt::Key_Z; ++key) {
        if (!QByteArray("PSNRCX").contains(static_cast<char>(key))) {
            QTest::newRow(QByteArray(1, static_cast<char>(key)).constData()) << key;
        }
    }
    const QVector<QPair<const char*, int>> keys{{"Return", Qt::Key_Return}, {"Enter", Qt::Key_Enter},
        {"Backspace", Qt::Key_Backspace}, {"Up", Qt::Key_Up}, {"Down", Qt::Key_Down}, {"Left", Qt::Key_Left},
        {"Right", Qt::Key_Right}, {"Home", Qt::Key_Home}, {"End", Qt::Key_End}, {"Page Up", Qt::Key_PageUp},
        {"Page Down", Qt::Key_PageDown}, {"Tab", Qt::Key_Tab}, {"Escape", Qt::Key_Escape}, {"F2", Qt::Key_F2},
        {"F5", Qt::Key_F5}, {"Space", Qt::Key_Space}, {"Insert", Qt::Key_Insert}, {"1", Qt::Key_1},
        {"unknown", Qt::Key_unknown}, {"none", 0}};
    for (const auto& key : keys) {
        QTest::newRow(key.first) << key.second;
    }
}

void TestMPanelKeyboard::otherKeys()
{
    QFETCH(int, key);
    DialogNotes notes;
    QVERIFY(!press(key));
    QVERIFY(notes.classes.isEmpty());
}

void TestMPanelKeyboard::bothViewsAskThePanel_data()
{
    QTest::addColumn<bool>("inTree");
    QTest::newRow("tree") << true;
    QTest::newRow("listing") << false;
}

void TestMPanelKeyboard::bothViewsAskThePanel()
{
    QFETCH(bool, inTree);
    QWidget* view = inTree ? static_cast<QWidget*>(panel->tree) : panel->list;
    view->setFocus();
    select({"alpha"});
    DialogNotes notes;
    QTest::keyClick(view, Qt::Key_R);
    QTest::keyClick(view, Qt::Key_C, Qt::ControlModifier);
    QTest::keyClick(view, Qt::Key_D);
    QCOMPARE(notes.classes, (QStringList{"Rename", "MCopy"}));
}

void TestMPanelKeyboard::pathOfTheCommand_data()
{
    QTest::addColumn<QStringList>("selected");
    QTest::addColumn<QString>("path");
    QTest::newRow("nothing") << QStringList() << QString();
    QTest::newRow("one") << QStringList{"beta"} << QStringLiteral("/beta");
    QTest::newRow("two") << QStringList{"alpha", "data"} << QStringLiteral("/alpha/data");
    QTest::newRow("in the order of selection")
        << QStringList{"data", "alpha"} << QStringLiteral("/data/alpha");
    QTest::newRow("the parent") << QStringList{".."} << QStringLiteral("/..");
    QTest::newRow("the parent and one") << QStringList{"..", "beta"} << QStringLiteral("/../beta");
}

// The path is the program that the execute command starts: what cannot be started is named in the box.
void TestMPanelKeyboard::pathOfTheCommand()
{
    QFETCH(QStringList, selected);
    QFETCH(QString, path);
    select(selected);
    DialogNotes notes;
    QVERIFY(press(Qt::Key_X));
    QCOMPARE(notes.texts, QStringList{"Failed to start program:\n" + dir->path() + path});
}

void TestMPanelKeyboard::keyInTheTreeTakesTheListsSelection()
{
    select({"beta"});
    panel->tree->setFocus();
    DialogNotes notes;
    QTest::keyClick(panel->tree, Qt::Key_X);
    QCOMPARE(notes.texts, QStringList{"Failed to start program:\n" + dir->path(QStringLiteral("beta"))});
}

void TestMPanelKeyboard::typeAhead()
{
    panel->list->setFocus();
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("alpha")));
    QTest::keyClick(panel->list, Qt::Key_D);
    QCOMPARE(panel->list->currentIndex().data().toString(), QStringLiteral("data"));
}

void TestMPanelKeyboard::arrowsMove()
{
    dir->folder(QStringLiteral("sub"));
    QVERIFY(waitForTreeRow(panel, dir->path(QStringLiteral("sub"))));
    panel->list->setFocus();
    panel->list->setCurrentIndex(listIndex(panel, QStringLiteral("alpha")));
    QTest::keyClick(panel->list, Qt::Key_Down);
    QCOMPARE(panel->list->currentIndex().data().toString(), QStringLiteral("beta"));
    panel->tree->setFocus();
    QTest::keyClick(panel->tree, Qt::Key_Down);
    QCOMPARE(panel->currentPath, dir->path(QStringLiteral("sub")));
}

void TestMPanelKeyboard::executeStartsTheFile()
{
    dir->file(QStringLiteral("run"), "#!/bin/sh\ntouch ran\n", 0755);
    QTRY_VERIFY(listIndex(panel, QStringLiteral("run")).isValid());
    select({"run"});
    DialogNotes notes;
    QVERIFY(press(Qt::Key_X));
    QTRY_VERIFY(dir->exists(QStringLiteral("ran")));
    QVERIFY(notes.classes.isEmpty());
}

VANTREL_TEST_MAIN(TestMPanelKeyboard)
#include "tst_MPanelKeyboard.moc"
