#include "app/Truncated.h"
#include "tests/support/TestMain.h"

class TestTruncated : public QObject
{
    Q_OBJECT

private slots:
    void dropsTheFraction_data()
    {
        QTest::addColumn<float>("value");
        QTest::addColumn<int>("expected");
        QTest::newRow("zero") << 0.0F << 0;
        QTest::newRow("down") << 99.99F << 99;
        QTest::newRow("towards zero") << -1.9F << -1;
        QTest::newRow("largest float below 2^31") << 2147483520.0F << 2147483520;
        QTest::newRow("2^31") << 2147483648.0F << std::numeric_limits<int>::max();
        QTest::newRow("-2^31") << -2147483648.0F << std::numeric_limits<int>::min();
        QTest::newRow("huge") << 3e38F << std::numeric_limits<int>::max();
        QTest::newRow("infinite") << std::numeric_limits<float>::infinity()
                                  << std::numeric_limits<int>::max();
        QTest::newRow("minus infinite")
            << -std::numeric_limits<float>::infinity() << std::numeric_limits<int>::min();
        QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << 0;
    }
    void dropsTheFraction()
    {
        QFETCH(float, value);
        QTEST(truncated(value), "expected");
    }
};

VANTREL_TEST_MAIN(TestTruncated)
#include "tst_Truncated.moc"
