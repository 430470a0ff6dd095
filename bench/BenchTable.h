#pragma once

#include <QByteArray>
#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <cstdio>

/// Figures of several rounds, by name, and how they are printed.
class BenchSamples
{
public:
    void add(const QString& name, double value) { m_values[name].append(value); }
    bool has(const QString& name) const { return m_values.contains(name); }
    QList<double> values(const QString& name) const { return m_values.value(name); }

    static double median(QList<double> values)
    {
        if (values.isEmpty()) {
            return 0;
        }
        std::sort(values.begin(), values.end());
        const int middle = values.size() / 2;
        return values.size() % 2 == 1 ? values.at(middle) : (values.at(middle - 1) + values.at(middle)) / 2;
    }
    double median(const QString& name) const { return median(values(name)); }

    /// @return "median (min to max)" of @p values times @p factor
    static QString spread(QList<double> values, double factor, int decimals)
    {
        if (values.isEmpty()) {
            return QStringLiteral("-");
        }
        std::sort(values.begin(), values.end());
        return QStringLiteral("%1 (%2 to %3)")
            .arg(median(values) * factor, 0, 'f', decimals)
            .arg(values.constFirst() * factor, 0, 'f', decimals)
            .arg(values.constLast() * factor, 0, 'f', decimals);
    }
    QString spread(const QString& name, double factor, int decimals) const
    {
        return spread(values(name), factor, decimals);
    }

    /// @return "median (min to max)" of the ratios to @p base, round by round
    QString ratio(const QString& name, const BenchSamples& base, int decimals = 2) const
    {
        const QList<double> mine = values(name);
        const QList<double> others = base.values(name);
        QList<double> ratios;
        for (int i = 0; i < qMin(mine.size(), others.size()); ++i) {
            if (others.at(i) > 0) {
                ratios.append(mine.at(i) / others.at(i));
            }
        }
        return spread(ratios, 1, decimals);
    }

private:
    QMap<QString, QList<double>> m_values;
};

/// Prints one row of a Markdown table.
inline void printRow(const QStringList& cells)
{
    std::printf("| %s |\n", qPrintable(cells.join(QStringLiteral(" | "))));
    std::fflush(stdout);
}

inline void printHeader(const QStringList& cells)
{
    QStringList rule;
    for (int i = 0; i < cells.size(); ++i) {
        rule.append(QStringLiteral("---"));
    }
    printRow(cells);
    printRow(rule);
}
