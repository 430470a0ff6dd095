#include "tests/support/RecordedCalls.h"

RecordedCalls::Wrong::Wrong(const QString& text)
    : std::runtime_error(text.toStdString())
{
}

RecordedCalls::RecordedCalls(const QString& base, const QStringList& calls)
    : m_base(base)
    , m_calls(calls)
{
}

RecordedCalls::Call RecordedCalls::take(const char* function, const QString& path)
{
    const QString expected = QLatin1String(function) + ' ' + relative(path);
    if (m_at == m_calls.size()) {
        throw Wrong("no call, expected " + expected);
    }
    const QString& line = m_calls.at(m_at++);
    const QStringList words = line.section(" = ", 0, 0).split(' ');
    const QStringList results = line.section(" = ", 1).split(' ');
    Call call{words.value(0), words.value(1), words.mid(2), results.value(0).toLongLong(),
        results.value(1).toInt()};
    if (call.function != QLatin1String(function) || call.path != relative(path)) {
        throw Wrong("call " + QString::number(m_at) + ": " + line + ", expected " + expected);
    }
    if (m_stop.number > 0 && call.function == m_stop.function && call.path == m_stop.path
        && ++m_stopSeen == m_stop.number) {
        abort = 1;
    }
    return call;
}

RecordedCalls::Stat RecordedCalls::look(const QString& path)
{
    const Call call = take("lstat", path);
    m_lastError = call.error;
    if (call.failed()) {
        return Stat::Missing;
    }
    m_lastSize = call.rest.value(1).toLongLong();
    const QString kind = call.rest.value(0);
    return kind == "folder" ? Stat::Folder : kind == "link" ? Stat::Link : Stat::File;
}

QString RecordedCalls::nextName(const QString& folder)
{
    for (;;) {
        const QString name = take("readdir", folder).rest.value(0);
        m_stopped = !name.isEmpty() && abort != 0;
        if (name.isEmpty() || m_stopped) {
            return QString();
        }
        if (name != "." && name != "..") {
            return name;
        }
    }
}

QString RecordedCalls::relative(const QString& path) const
{
    return path == m_base ? QString(".") : path.mid(m_base.length() + 1);
}

bool RecordedCalls::isWatched(const QString& path) const
{
    return path == m_base || path.startsWith(m_base + '/');
}
