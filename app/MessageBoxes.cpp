#include "app/MessageBoxes.h"

#include <numeric>

namespace {

/// Lines that a box has room for on a small screen.
constexpr int shownRows = 25;

/// Rows that it has room for, counted as below: most have more letters.
constexpr int wrappedRows = 30;

/// Letters that a row has room for at the least, on a screen 800 pixels wide; a path wraps where it has a
/// slash.
constexpr int rowLength = 30;

const QString gap = QStringLiteral("...");

/// @return rows that the lines take once they are wrapped, where none is longer than @p longest letters
int rowsOf(const QStringList& lines, int longest)
{
    return std::accumulate(lines.begin(), lines.end(), 0, [longest](int rows, const QString& line) {
        return rows + 1 + qMin(line.length(), longest) / rowLength;
    });
}

/// @return @p longest lowered until the lines have room, but not below one row
int longestLine(const QStringList& lines)
{
    int longest = wrappedRows * rowLength;
    while (longest > rowLength && rowsOf(lines, longest) > wrappedRows) {
        longest -= rowLength;
    }
    return longest;
}

/// Leaves out the middle of a line that is longer than @p longest letters.
QString shortened(const QString& line, int longest)
{
    return line.length() <= longest ? line : line.left(longest / 2) + gap + line.right(longest / 2);
}

} // namespace

QString boxText(const QString& text)
{
    constexpr int shown = (shownRows - 1) / 2;
    QStringList lines = text.split(QLatin1Char('\n'));
    if (lines.size() > shownRows) {
        lines = lines.mid(0, shown) + QStringList(gap) + lines.mid(lines.size() - shown);
    }
    const int longest = longestLine(lines);
    for (QString& line : lines) {
        line = shortened(line, longest);
    }
    return lines.join(QLatin1Char('\n'));
}

void criticalBox(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Critical, title, boxText(text), QMessageBox::Ok, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Ok);
    box.exec();
}

bool questionBox(QWidget* parent, const QString& title, const QString& text)
{
    QMessageBox box(QMessageBox::Question, title, boxText(text), QMessageBox::Yes | QMessageBox::No, parent);
    box.setTextFormat(Qt::PlainText);
    box.setDefaultButton(QMessageBox::Yes);
    return box.exec() == QMessageBox::Yes;
}
