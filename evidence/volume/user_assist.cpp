#include "user_assist.h"

#include "byte_fields.h"

namespace evidence {

namespace {

constexpr qsizetype data_size = 72;
constexpr qint64 run_count_offset = 4;
constexpr qint64 focus_count_offset = 8;
constexpr qint64 focus_ms_offset = 12;
constexpr qint64 ratings_offset = 16; // ten floats, -1 while unused
constexpr qint64 ratings_end = 56;
constexpr quint32 float_of_minus_one = 0xbf800000;
constexpr qint64 unused_index_offset = 56;
constexpr qint64 last_run_offset = 60;
constexpr quint32 focus_ms_per_run = 41000;

QChar rotated(QChar letter, char16_t first)
{
    return QChar(first + (letter.unicode() - first + 13) % 26);
}

} // namespace

QString rotated_name(QString name)
{
    for (QChar &c : name) {
        if (c >= u'A' && c <= u'Z')
            c = rotated(c, u'A');
        else if (c >= u'a' && c <= u'z')
            c = rotated(c, u'a');
    }
    return name;
}

QByteArray user_assist_data(quint32 run_count, qint64 last_run_filetime)
{
    QByteArray data(data_size, '\0');
    put_32(data, run_count_offset, run_count);
    put_32(data, focus_count_offset, run_count);
    put_32(data, focus_ms_offset, run_count * focus_ms_per_run);
    for (qint64 offset = ratings_offset; offset < ratings_end; offset += 4)
        put_32(data, offset, float_of_minus_one);
    put_32(data, unused_index_offset, 0xffffffff);
    put_64(data, last_run_offset, static_cast<quint64>(last_run_filetime));
    return data;
}

} // namespace evidence
