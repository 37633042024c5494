#include "hive_padding.h"

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr qint64 megabyte = 1000000;
constexpr int components_per_group = 500;

QString digits(int number, int width)
{
    return QString::number(number).rightJustified(width, u'0');
}

/// One key like those that fill most of a hive: values of 4 to 600 bytes that no walk looks for.
void add_component(hive_key &group, int index)
{
    static const QList<QByteArray> data{QByteArray(4, 'a'), QByteArray(24, 'b'),
                                        QByteArray(76, 'c'), QByteArray(180, 'd'),
                                        QByteArray(600, 'e')};
    hive_key &component = group.add_key(u"Component %1"_s.arg(digits(index, 7)));
    for (qsizetype value = 0; value < data.size(); ++value)
        component.binary(u"Value %1"_s.arg(value), data.at(value));
}

void add_components(hive_key &classes, qint64 count)
{
    for (int index = 0; index < count; ++index)
        add_component(classes.key(u"Group %1"_s.arg(digits(index / components_per_group, 4))),
                      index);
}

qint64 bytes_per_component()
{
    constexpr int sample = 4 * components_per_group;
    hive_builder hive;
    add_components(hive.root(), sample);
    return hive.bytes().size() / sample;
}

} // namespace

void pad_hive(hive_builder &hive, const QString &path, int megabytes)
{
    const qint64 missing = megabytes * megabyte - hive.bytes().size();
    if (missing > 0)
        add_components(hive.key(path), missing / bytes_per_component());
}
