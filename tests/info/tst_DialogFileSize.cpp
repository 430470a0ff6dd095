#include "info/DialogFileSize.h"

#include "app/aGlobal.h"
#include "tests/support/FormChild.h"
#include "tests/support/NoThread.h"
#include "tests/support/ProcessFigures.h"
#include "tests/support/TestDir.h"
#include "tests/support/TestMain.h"

#include <QGroupBox>
#include <QLabel>
#include <QPushButton>
#include <QStorageInfo>
#include <QTimer>

namespace {

QString textOf(const QWidget& form, const char* label)
{
    return formChild<QLabel>(form, label).text();
}

QPushButton& button(const DialogFileSize& dialog)
{
    return formChild<QPushButton>(dialog, "pushButton");
}

} // namespace

class TestDialogFileSize : public QObject
{
    Q_OBJECT

private:
    TestDir m_dir;
    int m_threads = 0; ///< before any dialog; one that has just ended may still be in the list

private slots:
    void initTestCase()
    {
        m_threads = threadCount();
        for (int i = 0; i < 30; ++i) {
            m_dir.files(QStringLiteral("many/%1").arg(i), 200);
        }
        m_dir.sparseFile(QStringLiteral("sparse"), 1234567);
    }
    void init() { gsNoRecurse = QStringLiteral("^/proc"); }

    void formIsTheDescribedOne()
    {
        const DialogFileSize dialog(nullptr, m_dir.path());
        QCOMPARE(dialog.windowTitle(), QStringLiteral("Disk Usage"));
        const auto& box = formChild<QGroupBox>(dialog, "groupBox");
        QCOMPARE(box.title(), QStringLiteral("Directory Statistics:"));
        QCOMPARE(box.styleSheet(),
            QStringLiteral(
                "QGroupBox {border: 2px solid gray;  border-radius: 9px; margin-top: 0.5em; }\n"
                "QGroupBox::title {subcontrol-origin: margin; left: 30px; padding: 0 3px 0 3px; }"));
        QCOMPARE(textOf(box, "label_5"), QStringLiteral("Folders:"));
        QCOMPARE(textOf(box, "label_6"), QStringLiteral("Files:"));
        QCOMPARE(textOf(box, "label_7"), QStringLiteral("Bytes:"));
        for (const char* name : {"label_Folders", "label_Files", "label_Bytes"}) {
            const auto& value = formChild<QLabel>(box, name);
            QVERIFY2(value.alignment().testFlag(Qt::AlignRight), name);
            QCOMPARE(value.textFormat(), Qt::PlainText);
        }
        QCOMPARE(textOf(dialog, "label"), QString());
        QCOMPARE(formChild<QLabel>(dialog, "label").styleSheet(), QStringLiteral("color: red;"));
        QCOMPARE(button(dialog).text(), QStringLiteral("Cancel"));
        QVERIFY(button(dialog).isDefault());
        for (const char* name : {"label_Path", "label_Device"}) {
            QCOMPARE(formChild<QLabel>(dialog, name).textFormat(), Qt::PlainText);
        }
    }

    void constructorStartsTheCount()
    {
        const DialogFileSize dialog(nullptr, m_dir.path());
        QCOMPARE(dialog.path, m_dir.path());
        const QStorageInfo volume(m_dir.path());
        QCOMPARE(dialog.device, QString::fromLocal8Bit(volume.device()));
        QCOMPARE(
            dialog.device.isEmpty(), !volume.isValid()); // as where the root is no mount, in a change of root
        QCOMPARE(dialog.running, 1);
        QCOMPARE(textOf(dialog, "label_Path"), QString());
        QTRY_COMPARE(dialog.running, 0);
        QCOMPARE(dialog.folderCount, 31);
        QCOMPARE(dialog.fileCount, 6001);
        QCOMPARE(textOf(dialog, "label_Folders"), QStringLiteral("31"));
        QCOMPARE(textOf(dialog, "label_Files"), QStringLiteral("6,001"));
        QCOMPARE(button(dialog).text(), QStringLiteral("&OK"));
        QCOMPARE(textOf(dialog, "label"), QString());
    }

    void displayIsGroupedAndComplete()
    {
        DialogFileSize dialog(nullptr, m_dir.path(QStringLiteral("sparse")));
        QTRY_COMPARE(dialog.running, 0);
        QCOMPARE(textOf(dialog, "label_Path"), m_dir.path(QStringLiteral("sparse")));
        QCOMPARE(textOf(dialog, "label_Device"), QStringLiteral("On device: ") + dialog.device);
        QCOMPARE(textOf(dialog, "label_Folders"), QStringLiteral("0"));
        QCOMPARE(textOf(dialog, "label_Files"), QStringLiteral("1"));
        QCOMPARE(textOf(dialog, "label_Bytes"), QStringLiteral("1,234,567"));
        dialog.folderCount = Q_INT64_C(9223372036854775807);
        dialog.fileCount = 999;
        dialog.byteCount = 0;
        dialog.UpdateDisplay();
        QCOMPARE(textOf(dialog, "label_Folders"), QStringLiteral("9,223,372,036,854,775,807"));
        QCOMPARE(textOf(dialog, "label_Files"), QStringLiteral("999"));
        QCOMPARE(textOf(dialog, "label_Bytes"), QStringLiteral("0"));
    }

    void timerNeverStops()
    {
        DialogFileSize dialog(nullptr, m_dir.path(QStringLiteral("sparse")));
        QTRY_COMPARE(dialog.running, 0);
        dialog.byteCount = 5000;
        QTRY_COMPARE(textOf(dialog, "label_Bytes"), QStringLiteral("5,000"));
        dialog.byteCount = 6000;
        QTRY_COMPARE(textOf(dialog, "label_Bytes"), QStringLiteral("6,000"));
    }

    void missingPathCountsNothing()
    {
        const DialogFileSize dialog(nullptr, m_dir.path(QStringLiteral("nothing")));
        QTRY_COMPARE(dialog.running, 0);
        QCOMPARE(dialog.folderCount + dialog.fileCount + dialog.byteCount, 0);
        QCOMPARE(textOf(dialog, "label_Device"), QStringLiteral("On device: "));
    }

    void cancelKeepsTheDialogAndItsTotals()
    {
        DialogFileSize dialog(nullptr, m_dir.path());
        dialog.show();
        button(dialog).click();
        QCOMPARE(dialog.running, 0);
        QCOMPARE(textOf(dialog, "label"), QStringLiteral("Cancelled..."));
        QCOMPARE(button(dialog).text(), QStringLiteral("&OK"));
        QVERIFY(dialog.isVisible());
        QTRY_COMPARE(textOf(dialog, "label_Path"), m_dir.path());
        QVERIFY(dialog.fileCount < 6001);
        QCOMPARE(textOf(dialog, "label"), QStringLiteral("Cancelled..."));
        button(dialog).click();
        QVERIFY(!dialog.isVisible());
    }

    void buttonClosesAfterTheWalk()
    {
        DialogFileSize dialog(nullptr, m_dir.path(QStringLiteral("sparse")));
        dialog.show();
        QTRY_COMPARE(dialog.running, 0);
        QVERIFY(dialog.isVisible());
        button(dialog).click();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(textOf(dialog, "label"), QString());
    }

    void everyWayToCloseStopsTheWalk_data()
    {
        QTest::addColumn<int>("key");
        QTest::newRow("Escape") << static_cast<int>(Qt::Key_Escape);
        QTest::newRow("title bar") << 0;
    }
    void everyWayToCloseStopsTheWalk()
    {
        QFETCH(int, key);
        DialogFileSize dialog(nullptr, QStringLiteral("/usr")); // large enough to be still at it
        QTimer::singleShot(0, &dialog, [&dialog, key] {
            QCOMPARE(dialog.running, 1);
            if (key != 0) {
                QTest::keyClick(&dialog, static_cast<Qt::Key>(key));
            } else {
                dialog.close();
            }
        });
        QCOMPARE(dialog.exec(), static_cast<int>(QDialog::Rejected));
        QCOMPARE(dialog.running, 0);
        const qint64 entries = dialog.fileCount + dialog.folderCount;
        QTRY_COMPARE(button(dialog).text(), QStringLiteral("&OK"));
        QVERIFY(dialog.fileCount + dialog.folderCount <= entries + 1);
    }

    void modalWhileItRuns()
    {
        QWidget parent;
        DialogFileSize dialog(&parent, m_dir.path(QStringLiteral("sparse")));
        bool modal = false;
        QTimer::singleShot(0, &dialog, [&] {
            modal = QApplication::activeModalWidget() == &dialog;
            dialog.close();
        });
        dialog.exec();
        QVERIFY(modal);
        QCOMPARE(dialog.parentWidget(), &parent);
    }

    void keyboardAloneWorksIt()
    {
        DialogFileSize dialog(nullptr, m_dir.path());
        dialog.show();
        QTest::keyClick(&dialog, Qt::Key_Return);
        QCOMPARE(textOf(dialog, "label"), QStringLiteral("Cancelled..."));
        QVERIFY(dialog.isVisible());
        QTest::keyClick(&dialog, Qt::Key_Return);
        QVERIFY(!dialog.isVisible());
    }

    void noThreadToBeHad()
    {
        NoThread noThread(m_dir.path());
        DialogFileSize dialog(nullptr, m_dir.path());
        noThread.run(&dialog, [&dialog] {
            QTimerEvent event(0);
            QCoreApplication::sendEvent(&dialog, &event);
            for (const char* name : {"label_Folders", "label_Files", "label_Bytes"}) {
                QCOMPARE(textOf(dialog, name), QString()); // no zero that nobody has counted
            }
        });
        QCOMPARE(dialog.running, 0);
    }

    void threadsEndWithTheirDialogs()
    {
        const int descriptors = descriptorCount();
        for (int round = 0; round < 100; ++round) {
            DialogFileSize dialog(nullptr, m_dir.path());
            dialog.show();
            if (round % 3 == 1) {
                QTRY_COMPARE(dialog.running, 0);
                QTRY_COMPARE(threadCount(), m_threads + 1); // it waits for the dialog
            } else if (round % 3 == 2) {
                dialog.close();
            }
        }
        QTRY_COMPARE(threadCount(), m_threads); // the system takes a moment to forget a thread
        QCOMPARE(descriptorCount(), descriptors);
    }
};

VANTREL_TEST_MAIN(TestDialogFileSize)
#include "tst_DialogFileSize.moc"
