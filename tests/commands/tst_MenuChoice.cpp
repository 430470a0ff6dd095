#include "commands/MenuChoice.h"
#include "tests/support/ModalAnswers.h"
#include "tests/support/TestMain.h"

#include <QMenu>

class TestMenuChoice : public QObject
{
    Q_OBJECT

private slots:
    void nothingBefore();
    void triggeredWhileOpen();
    void byReturn();
    void byEscape();

private:
    /// Executes a menu with two entries, and returns the text of what is chosen.
    static QString run(const std::function<void(QMenu*)>& answer);
};

QString TestMenuChoice::run(const std::function<void(QMenu*)>& answer)
{
    QMenu menu;
    menu.addAction(QStringLiteral("One"));
    menu.addAction(QStringLiteral("Two"));
    const MenuChoice choice(&menu);
    ModalAnswers answers;
    answers.meet<QMenu>(answer);
    menu.exec(QPoint(20, 20));
    return choice.entry() != nullptr ? choice.entry()->text() : QString();
}

void TestMenuChoice::nothingBefore()
{
    QMenu menu;
    menu.addAction(QStringLiteral("One"));
    QVERIFY(MenuChoice(&menu).entry() == nullptr);
}

// As assistive technology does: the menu is not told that anything was chosen from it.
void TestMenuChoice::triggeredWhileOpen()
{
    QCOMPARE(run([](QMenu* menu) { menu->actions().at(1)->trigger(); }), QStringLiteral("Two"));
}

void TestMenuChoice::byReturn()
{
    QCOMPARE(run([](QMenu* menu) {
        QTest::keyClick(menu, Qt::Key_Down);
        QTest::keyClick(menu, Qt::Key_Return);
    }),
        QStringLiteral("One"));
}

void TestMenuChoice::byEscape()
{
    QCOMPARE(run([](QMenu* menu) { QTest::keyClick(menu, Qt::Key_Escape); }), QString());
}

VANTREL_TEST_MAIN(TestMenuChoice)
#include "tst_MenuChoice.moc"
