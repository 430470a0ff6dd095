#include "app/TextHelpers.h"
#include "tests/support/TestMain.h"

class TestTextHelpers : public QObject
{
    Q_OBJECT

private slots:
    void upOneLevel() { QCOMPARE(xs_UpOneLevel(QStringLiteral("/home/user")), QStringLiteral("/home")); }
};

VANTREL_TEST_MAIN(TestTextHelpers)
#include "tst_TextHelpers.moc"
