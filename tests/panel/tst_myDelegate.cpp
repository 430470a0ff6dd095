#include "panel/myDelegate.h"
#include "tests/support/TestMain.h"

#include <QPainter>
#include <QStandardItemModel>
#include <QTableView>

namespace {

const QRect cell(7, 5, 60, 18);

QImage blank()
{
    QImage image(100, 40, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

} // namespace

class TestmyDelegate : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void isAStyledDelegate();
    void startsWithoutTarget();
    void noTargetPaintsLikeTheBase();
    void targetGetsItsOutline();
    void otherCells_data();
    void otherCells();
    void sameCellOfAnotherModel();
    void painterIsAsBefore();
    void selectedCellGetsItToo();
    void targetFollowsItsRow();

private:
    QImage painted(const QStyledItemDelegate& delegate, const QModelIndex& index) const;

    QStandardItemModel model{3, 4};
    QTableView view;
    QStyleOptionViewItem option;
};

void TestmyDelegate::init()
{
    model.setRowCount(0);
    model.setRowCount(3);
    model.setData(model.index(1, 0), QStringLiteral("name"));
    option = QStyleOptionViewItem();
    option.rect = cell;
    option.state = QStyle::State_Enabled;
    option.widget = &view;
    option.font = view.font();
}

QImage TestmyDelegate::painted(const QStyledItemDelegate& delegate, const QModelIndex& index) const
{
    QImage image = blank();
    QPainter painter(&image);
    delegate.paint(&painter, option, index);
    return image;
}

void TestmyDelegate::isAStyledDelegate()
{
    const myDelegate delegate;
    QVERIFY(qobject_cast<const QStyledItemDelegate*>(&delegate) != nullptr);
    QCOMPARE(delegate.metaObject()->className(), "myDelegate");
}

void TestmyDelegate::startsWithoutTarget()
{
    const myDelegate delegate;
    QVERIFY(!delegate.dropTargetIndex.isValid());
}

void TestmyDelegate::noTargetPaintsLikeTheBase()
{
    const myDelegate delegate;
    const QStyledItemDelegate base;
    QCOMPARE(painted(delegate, model.index(1, 0)), painted(base, model.index(1, 0)));
    QCOMPARE(painted(delegate, QModelIndex()), painted(base, QModelIndex()));
}

void TestmyDelegate::targetGetsItsOutline()
{
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 0);
    QImage expected = painted(QStyledItemDelegate(), model.index(1, 0));
    {
        QPainter painter(&expected);
        painter.setPen(Qt::blue);
        painter.drawRect(cell.left() + 1, cell.top() + 1, cell.width() - 2, cell.height() - 2);
    }
    const QImage image = painted(delegate, model.index(1, 0));
    QCOMPARE(image, expected);
    QCOMPARE(image.pixelColor(cell.left() + 1, cell.top() + 1), QColor(Qt::blue));
    QCOMPARE(image.pixelColor(cell.left() + 1, cell.center().y()), QColor(Qt::blue));
    QVERIFY(image.pixelColor(cell.left(), cell.top()) != QColor(Qt::blue));
    QVERIFY(image.pixelColor(cell.left() + 2, cell.top() + 2) != QColor(Qt::blue));
}

void TestmyDelegate::otherCells_data()
{
    QTest::addColumn<int>("row");
    QTest::addColumn<int>("column");
    QTest::newRow("same row, next column") << 1 << 1;
    QTest::newRow("same row, last column") << 1 << 3;
    QTest::newRow("row above") << 0 << 0;
    QTest::newRow("row below") << 2 << 0;
}

void TestmyDelegate::otherCells()
{
    QFETCH(int, row);
    QFETCH(int, column);
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 0);
    const QModelIndex index = model.index(row, column);
    QCOMPARE(painted(delegate, index), painted(QStyledItemDelegate(), index));
}

void TestmyDelegate::sameCellOfAnotherModel()
{
    QStandardItemModel other(3, 4);
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 1);
    QCOMPARE(painted(delegate, other.index(1, 1)), painted(QStyledItemDelegate(), other.index(1, 1)));
}

void TestmyDelegate::painterIsAsBefore()
{
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 0);
    QImage image = blank();
    QPainter painter(&image);
    painter.setPen(Qt::red);
    painter.setBrush(Qt::green);
    delegate.paint(&painter, option, model.index(1, 0));
    QCOMPARE(painter.pen(), QPen(Qt::red));
    QCOMPARE(painter.brush(), QBrush(Qt::green));
}

void TestmyDelegate::selectedCellGetsItToo()
{
    option.state |= QStyle::State_Selected | QStyle::State_HasFocus;
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 0);
    const QImage image = painted(delegate, model.index(1, 0));
    QCOMPARE(image.pixelColor(cell.left() + 1, cell.center().y()), QColor(Qt::blue));
}

// While a drag hovers, rows come and go above the one that it is over.
void TestmyDelegate::targetFollowsItsRow()
{
    myDelegate delegate;
    delegate.dropTargetIndex = model.index(1, 0);
    model.insertRow(0);
    QCOMPARE(painted(delegate, model.index(1, 0)), painted(QStyledItemDelegate(), model.index(1, 0)));
    QVERIFY(painted(delegate, model.index(2, 0)) != painted(QStyledItemDelegate(), model.index(2, 0)));
    model.removeRow(2);
    QVERIFY(!delegate.dropTargetIndex.isValid());
}

VANTREL_TEST_MAIN(TestmyDelegate)
#include "tst_myDelegate.moc"
