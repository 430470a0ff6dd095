#include "app/MessageBoxes.h"
#include "tests/support/BoxAnswers.h"
#include "tests/support/TestMain.h"

class TestMessageBoxes : public QObject
{
    Q_OBJECT

private slots:
    void criticalShowsOneOkButton()
    {
        QWidget parent;
        BoxAnswers answers;
        answers.click(QStringLiteral("OK"));
        criticalBox(&parent, QStringLiteral("Error"), QStringLiteral("Failed to create:\n/a/b"));
        QCOMPARE(answers.seen().size(), 1);
        const BoxAnswers::Box& box = answers.seen().constFirst();
        QCOMPARE(box.title, QStringLiteral("Error"));
        QCOMPARE(box.text, QStringLiteral("Failed to create:\n/a/b"));
        QCOMPARE(box.icon, QMessageBox::Critical);
        QCOMPARE(box.buttons, QStringList{QStringLiteral("OK")});
        QVERIFY(box.modal);
        QCOMPARE(box.parent, &parent);
    }

    void questionShowsYesAndNo_data()
    {
        QTest::addColumn<int>("key");
        QTest::addColumn<bool>("yes");
        QTest::newRow("Return presses Yes") << static_cast<int>(Qt::Key_Return) << true;
        QTest::newRow("Escape is No") << static_cast<int>(Qt::Key_Escape) << false;
    }
    void questionShowsYesAndNo()
    {
        QFETCH(int, key);
        QFETCH(bool, yes);
        QWidget parent;
        BoxAnswers answers;
        answers.key(static_cast<Qt::Key>(key));
        QCOMPARE(questionBox(&parent, QStringLiteral("Vantrel"), QStringLiteral("Copy?\n\n/a")), yes);
        const BoxAnswers::Box& box = answers.seen().constFirst();
        QCOMPARE(box.title, QStringLiteral("Vantrel"));
        QCOMPARE(box.text, QStringLiteral("Copy?\n\n/a"));
        QCOMPARE(box.icon, QMessageBox::Question);
        QCOMPARE(box.defaultButton, QStringLiteral("Yes"));
        QStringList buttons = box.buttons;
        buttons.sort();
        QCOMPARE(buttons, (QStringList{QStringLiteral("No"), QStringLiteral("Yes")}));
        QVERIFY(box.modal);
        QCOMPARE(box.parent, &parent);
    }

    void questionIsAnsweredByItsButtons()
    {
        BoxAnswers answers;
        answers.click(QStringLiteral("Yes")).click(QStringLiteral("No")).close();
        QVERIFY(questionBox(nullptr, QStringLiteral("Vantrel"), QStringLiteral("?")));
        QVERIFY(!questionBox(nullptr, QStringLiteral("Vantrel"), QStringLiteral("?")));
        QVERIFY(!questionBox(nullptr, QStringLiteral("Vantrel"), QStringLiteral("?")));
    }

    void namesThatLookLikeHtmlAreShownAsTheyAre()
    {
        BoxAnswers answers;
        int plain = 0;
        const auto look = [&plain] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            QVERIFY(box != nullptr);
            QCOMPARE(box->textFormat(), Qt::PlainText);
            ++plain;
        };
        answers.meanwhile(look).click(QStringLiteral("OK"));
        criticalBox(nullptr, QStringLiteral("Error"), QStringLiteral("<b>x</b>"));
        answers.meanwhile(look).click(QStringLiteral("No"));
        questionBox(nullptr, QStringLiteral("Vantrel"), QStringLiteral("<b>x</b>"));
        QCOMPARE(plain, 2);
    }

    void textOfManyLines()
    {
        QStringList lines;
        for (int i = 0; i < 25; ++i) {
            lines.append(QString::number(i));
        }
        QCOMPARE(boxText(lines.join(QLatin1Char('\n'))), lines.join(QLatin1Char('\n')));
        lines.append(QStringLiteral("25"));
        QCOMPARE(boxText(lines.join(QLatin1Char('\n'))),
            (lines.mid(0, 12) << QStringLiteral("...") << lines.mid(14)).join(QLatin1Char('\n')));
        QCOMPARE(boxText(QString()), QString());
    }

    void longLinesAreCut()
    {
        const QString usual = QStringLiteral("Delete file:\n/") + QString(600, 'a');
        QCOMPARE(boxText(usual), usual);
        const QString path = "/begin" + QString(4000, 'a') + "/end";
        const QString text
            = boxText("Replace file:\n" + path + "\n2020-01-01 1 bytes\n\nWith file:\n" + path + "\nb");
        const QStringList lines = text.split('\n');
        QCOMPARE(lines.size(), 7);
        QVERIFY(text.length() < 30 * 30);
        for (const int at : {1, 5}) {
            QVERIFY(lines.at(at).startsWith("/begin"));
            QVERIFY(lines.at(at).endsWith("/end"));
            QVERIFY(lines.at(at).contains("aaa...aaa"));
            QVERIFY(lines.at(at).length() >= 240);
        }
        QCOMPARE(lines.at(2), QStringLiteral("2020-01-01 1 bytes"));
    }

    void buttonsStayOnTheScreen_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("many lines") << QStringLiteral("Delete file:\n/a/") + QString(250, '\n') + "end";
        QString deep;
        while (deep.length() < 4090) {
            deep += "/folder";
        }
        QTest::newRow("long path") << QStringLiteral("Delete file:\n") + deep + "\nend";
        QTest::newRow("two of them") << QStringLiteral("Replace file:\n") + deep + "\nx\n\nWith file:\n"
                + deep + "\nend";
    }

    void buttonsStayOnTheScreen()
    {
        QFETCH(QString, text);
        BoxAnswers answers;
        int height = 0;
        const auto look = [&height] { height = qMax(height, QApplication::activeModalWidget()->height()); };
        answers.meanwhile(look).click(QStringLiteral("OK"));
        criticalBox(nullptr, QStringLiteral("Error"), text);
        answers.meanwhile(look).click(QStringLiteral("No"));
        questionBox(nullptr, QStringLiteral("Vantrel"), text);
        QVERIFY(height > 100);
        QVERIFY2(height <= 600, QByteArray::number(height).constData());
        QVERIFY(answers.texts().constLast().endsWith(QStringLiteral("\nend")));
    }
};

VANTREL_TEST_MAIN(TestMessageBoxes)
#include "tst_MessageBoxes.moc"
