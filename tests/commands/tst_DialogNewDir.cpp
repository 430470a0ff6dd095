#include "commands/DialogNewDir.h"

#include "tests/support/AsNobody.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/FormChild.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QDir>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace {

const QString ok = QStringLiteral("OK");

void press(const DialogNewDir& dialog, const QString& name)
{
    formChild<QLineEdit>(dialog, "lineEdit").setText(name);
    formChild<QPushButton>(dialog, "pushButtonOK").click();
}

void compareBoxes(const BoxAnswers& answers, const DialogNewDir& dialog, const QStringList& texts)
{
    QCOMPARE(answers.texts(), texts);
    for (const BoxAnswers::Box& box : answers.seen()) {
        QCOMPARE(box.title, QStringLiteral("Error"));
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.buttons, QStringList{ok});
        QCOMPARE(box.parent, &dialog);
        QVERIFY(box.modal);
    }
}

} // namespace

class TestDialogNewDir : public QObject
{
    Q_OBJECT

private:
    QString m_before = QDir::currentPath();

private slots:
    void cleanup() { QDir::setCurrent(m_before); }

    void formIsTheDescribedOne()
    {
        QWidget parent;
        const DialogNewDir dialog(&parent, QStringLiteral("/tmp/<b>folder</b>"));
        QCOMPARE(dialog.parentWidget(), &parent);
        QVERIFY(dialog.layout() == nullptr);
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Create New Directory"));
        QCOMPARE(formChild<QLabel>(dialog, "label").text(), QStringLiteral("Current Directory:"));
        QCOMPARE(formChild<QLabel>(dialog, "label_Path").text(), QStringLiteral("/tmp/<b>folder</b>"));
        QCOMPARE(formChild<QLabel>(dialog, "label_Path").textFormat(), Qt::PlainText);
        QCOMPARE(formChild<QLabel>(dialog, "label_3").text(), QStringLiteral("Create new sub-directory:"));
        QCOMPARE(formChild<QLineEdit>(dialog, "lineEdit").text(), QString());
        const auto& okButton = formChild<QPushButton>(dialog, "pushButtonOK");
        QCOMPARE(okButton.text(), QStringLiteral("&OK"));
        QVERIFY(okButton.isDefault());
        const auto& cancel = formChild<QPushButton>(dialog, "pushButtonCancel");
        QCOMPARE(cancel.text(), QStringLiteral("&Cancel"));
        QVERIFY(!cancel.autoDefault());
    }

    void makesTheFolderAndCloses_data()
    {
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "new";
        QTest::newRow("not trimmed") << " new ";
        QTest::newRow("below one that exists") << "sub/new";
        QTest::newRow("letters of other scripts") << "\u00e4\u4e2d";
        QTest::newRow("dashes and stars") << "-*?";
    }
    void makesTheFolderAndCloses()
    {
        QFETCH(QString, name);
        TestDir dir;
        dir.folder(QStringLiteral("sub"));
        BoxAnswers answers;
        DialogNewDir dialog(nullptr, dir.path());
        dialog.show();
        press(dialog, name);
        QVERIFY(QFileInfo(dir.path(name)).isDir());
        QVERIFY(!dialog.isVisible());
        QVERIFY(answers.seen().isEmpty());
    }

    void returnPressesOk()
    {
        TestDir dir;
        DialogNewDir dialog(nullptr, dir.path());
        dialog.show();
        QVERIFY(QTest::qWaitForWindowActive(&dialog));
        auto& field = formChild<QLineEdit>(dialog, "lineEdit");
        QTRY_VERIFY(field.hasFocus());
        QTest::keyClicks(&field, QStringLiteral("typed"));
        QTest::keyClick(&field, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.tree(), QStringList{QStringLiteral("typed/")});
    }

    void cancelDoesNothing_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("button") << 0;
    }
    void cancelDoesNothing()
    {
        QFETCH(int, key);
        TestDir dir;
        DialogNewDir dialog(nullptr, dir.path());
        dialog.show();
        formChild<QLineEdit>(dialog, "lineEdit").setText(QStringLiteral("new"));
        if (key == 0) {
            formChild<QPushButton>(dialog, "pushButtonCancel").click();
        } else {
            QTest::keyClick(&dialog, static_cast<Qt::Key>(key));
        }
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dir.tree(), QStringList());
    }

    void refusalKeepsTheDialogOpen_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("text"); // %1 is the folder
        QTest::newRow("a folder has the name") << "sub"
                                               << "sub already exists in directory:\n%1";
        QTest::newRow("a file has the name") << "file"
                                             << "file already exists in directory:\n%1";
        QTest::newRow("no name") << ""
                                 << "Failed to create:\n%1/";
        QTest::newRow("no parent") << "no/new"
                                   << "Failed to create:\n%1/no/new";
        QTest::newRow("dot") << "."
                             << ". already exists in directory:\n%1";
        QTest::newRow("like HTML") << "<b>x</b>"
                                   << "Failed to create:\n%1/<b>x</b>"; // holds a "/"
        QTest::newRow("too long") << QString(256, QLatin1Char('n'))
                                  << "Failed to create:\n%1/" + QString(256, QLatin1Char('n'));
    }
    void refusalKeepsTheDialogOpen()
    {
        QFETCH(QString, name);
        QFETCH(QString, text);
        TestDir dir;
        dir.folder(QStringLiteral("sub"));
        dir.file(QStringLiteral("file"));
        BoxAnswers answers;
        answers.click(ok);
        DialogNewDir dialog(nullptr, dir.path());
        dialog.show();
        press(dialog, name);
        compareBoxes(answers, dialog, {text.replace(QLatin1String("%1"), dir.path())});
        QVERIFY(dialog.isVisible());
        press(dialog, QStringLiteral("corrected"));
        QVERIFY(!dialog.isVisible());
        QVERIFY(dir.exists(QStringLiteral("corrected")));
    }

    void readOnlyFolderIsRefused()
    {
        TestDir dir;
        dir.setMode(QString(), 0755);
        const QString folder = dir.folder(QStringLiteral("closed"), 0555);
        const AsNobody nobody;
        BoxAnswers answers;
        answers.click(ok);
        DialogNewDir dialog(nullptr, folder);
        dialog.show();
        press(dialog, QStringLiteral("new"));
        compareBoxes(
            answers, dialog, {QStringLiteral("Permission denied to write in directory:\n") + folder});
        QVERIFY(dialog.isVisible());
    }

    void vanishedFolderClosesAndGoesOn_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("second"); // %1 is the folder
        QTest::newRow("name in the working folder") << "here"
                                                    << "here already exists in directory:\n%1";
        QTest::newRow("new name") << "new"
                                  << "Permission denied to write in directory:\n%1";
    }
    void vanishedFolderClosesAndGoesOn()
    {
        QFETCH(QString, name);
        QFETCH(QString, second);
        TestDir dir;
        dir.folder(QStringLiteral("here"));
        QVERIFY(QDir::setCurrent(dir.path()));
        const QString gone = dir.path(QStringLiteral("gone"));
        BoxAnswers answers;
        DialogNewDir dialog(nullptr, gone);
        dialog.show();
        QVector<bool> open;
        const auto note = [&open, &dialog] { open.append(dialog.isVisible()); };
        answers.meanwhile(note).click(ok).meanwhile(note).click(ok);
        press(dialog, name);
        QCOMPARE(open, (QVector<bool>{true, false}));
        compareBoxes(answers, dialog,
            {QStringLiteral("Vantrel cannot access directory:\n") + gone,
                second.replace(QLatin1String("%1"), gone)});
        QVERIFY(!dialog.isVisible());
        QVERIFY(!dir.exists(QStringLiteral("new")));
    }
};

VANTREL_TEST_MAIN(TestDialogNewDir)
#include "tst_DialogNewDir.moc"
