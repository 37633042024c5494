#include "deleted_texts.h"

#include <QStringList>
#include <QtEndian>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype most_bytes = 4096; // of a value's data that are shown

QString text_of(record_flaw flaw)
{
    switch (flaw) {
    case record_flaw::none:
        return {};
    case record_flaw::in_use:
        return u"in use again"_s;
    case record_flaw::written_over:
        return u"written over"_s;
    case record_flaw::shared:
        return u"claimed by several records"_s;
    case record_flaw::in_blocks:
        return u"in blocks, which are not followed"_s;
    }
    return {};
}

QString partial(const QStringList &reasons)
{
    return reasons.isEmpty() ? u"whole"_s : u"partial: "_s + reasons.join("; "_L1);
}

/// UTF-16LE up to the first zero.
QString registry_text(const QByteArray &data)
{
    QString text;
    for (qsizetype i = 0; i + 1 < data.size(); i += 2) {
        const QChar c(qFromLittleEndian<quint16>(data.constData() + i));
        if (c.isNull())
            break;
        text += c;
    }
    return text;
}

QString hexadecimal(const QByteArray &data)
{
    return QString::fromLatin1(data.toHex());
}

} // namespace

QString state_of(const deleted_key &key)
{
    QStringList reasons;
    if (key.list != record_flaw::none)
        reasons.append(u"the list of its %1 values is "_s.arg(key.values_told) + text_of(key.list));
    else if (key.values.size() < key.values_told)
        reasons.append(u"%1 of its %2 values are gone"_s.arg(key.values_told - key.values.size())
                           .arg(key.values_told));
    const auto lost = std::count_if(key.values.begin(), key.values.end(), [](const auto &value) {
        return value.data != record_flaw::none;
    });
    if (lost > 0)
        reasons.append(u"the data of %1 of its values are not there"_s.arg(lost));
    return partial(reasons);
}

QString state_of(const deleted_value &value, const deleted_key &key)
{
    QStringList reasons;
    if (key.path == path_state::unknown)
        reasons.append(u"no list names it"_s);
    if (value.data != record_flaw::none)
        reasons.append(u"its data are "_s + text_of(value.data));
    return partial(reasons);
}

QString text_of(path_state state)
{
    switch (state) {
    case path_state::whole:
        return u"whole"_s;
    case path_state::doubtful:
        return u"doubtful"_s;
    case path_state::partial:
        return u"partial"_s;
    case path_state::unknown:
        return u"unknown"_s;
    }
    return {};
}

QString text_of_data(quint32 type, const QByteArray &data)
{
    constexpr quint32 text = 1;
    constexpr quint32 text_with_variables = 2;
    constexpr quint32 number_32 = 4;
    constexpr quint32 number_64 = 11;
    if (type == text || type == text_with_variables)
        return registry_text(data.first(std::min(data.size(), most_bytes)));
    if (type == number_32 && data.size() == 4)
        return QString::number(qFromLittleEndian<quint32>(data.constData()));
    if (type == number_64 && data.size() == 8)
        return QString::number(qFromLittleEndian<quint64>(data.constData()));
    return hexadecimal(data.first(std::min(data.size(), most_bytes)));
}

qint64 unix_seconds_of(quint64 filetime)
{
    constexpr quint64 units_of_a_second = 10'000'000;
    constexpr qint64 seconds_before_1970 = 11'644'473'600;
    const qint64 seconds = qint64(filetime / units_of_a_second) - seconds_before_1970;
    return qint64(filetime) < 0 ? 0 : std::max<qint64>(0, seconds);
}
