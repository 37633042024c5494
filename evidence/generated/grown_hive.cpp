#include "grown_hive.h"

#include "application_keys.h"
#include "user_assist.h"

#include <QVariantMap>
#include <algorithm>
#include <limits>

namespace evidence {

using namespace Qt::StringLiterals;

namespace {

/// Keys and values together; more would only slow the walks down.
constexpr qsizetype most_parts = 2000;

constexpr qint64 filetime_of_1970 = 116444736000000000;

const QStringList &class_ids()
{
    static const QStringList ids{u"{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}"_s,
                                 u"{20D04FE0-3AEA-1069-A2D8-08002B30309D}"_s};
    return ids;
}

const QStringList &uninstall_values()
{
    static const QStringList names{u"DisplayName"_s,     u"DisplayVersion"_s,  u"Publisher"_s,
                                   u"InstallDate"_s,     u"InstallLocation"_s, u"InstallSource"_s,
                                   u"UninstallString"_s, u"URLInfoAbout"_s,    u"displayname"_s};
    return names;
}

const QStringList &application_names()
{
    static const QStringList names{u"Application"_s, u"application"_s, u"{Product}"_s};
    return names;
}

/// The keys that the artefacts describe of such a hive, in their order.
QList<QVariantMap> described_keys(hive_kind kind, const QVariantList &artifacts)
{
    const bool is_software = kind == hive_kind::software;
    const QString input = is_software ? u"software_hive"_s : u"user_hives"_s;
    QList<QVariantMap> keys;
    for (const QVariant &description : artifacts) {
        const QVariantMap artifact = description.toMap();
        QVariantList described;
        if (artifact.value(u"input"_s).toString() == input)
            described = artifact.value(u"keys"_s).toList();
        if (!is_software)
            described += artifact.value(u"keys_of_users"_s).toList();
        for (const QVariant &key : std::as_const(described))
            keys.append(key.toMap());
    }
    return keys;
}

/// The bytes of a name and whether they claim to be Latin-1.
struct odd_name
{
    QByteArray stored;
    bool compressed;
};

const QList<odd_name> &odd_names()
{
    static const QList<odd_name> names{
        {"", true},
        {QByteArray("a\0b", 3), true},
        {"line\r\nend\x1b[31m", true},
        {"a\\b/c", true},
        {"\xe9\xff", true},
        {utf16le(u"\u0416\u4e2d\U0001F600"_s), false},
        {QByteArray("\x00\xd8", 2), false},         // a lone surrogate
        {QByteArray("\x41\x00\x42", 3), false},     // an odd size
        {QByteArray("\x00\x00\x41\x00", 4), false}, // begins with NUL
        {QByteArray(300, 'n'), true},
        {QByteArray(4000, '\xe9'), true},
    };
    return names;
}

} // namespace

grown_hive::grown_hive(byte_choices &choices, hive_kind kind, const QVariantList &artifacts)
    : m_choices(choices)
{
    m_hive.minor_version(m_choices.pick(QList<quint32>{5, 3, 4, 6}));
    m_keys.append(&m_hive.root());
    const QList<growth> plans = growths_of(kind, artifacts);
    for (const growth &plan : plans) {
        if (!m_choices.one_in(8))
            grow(key_at(plan.path), plan, plan.levels);
    }
    if (m_choices.one_in(2))
        m_hive.sort_subkeys();
}

QList<grown_hive::growth> grown_hive::usual_growths(hive_kind kind)
{
    const QStringList &applications = application_names();
    if (kind == hive_kind::software)
        return {{uninstall_key, applications, uninstall_values(), 1},
                {uninstall_key_32, applications, uninstall_values(), 1},
                {registered_applications_key, {}, applications, 0}};
    return {{user_assist_key,
             QStringList(u"Count"_s) + class_ids(),
             {rotated_name(u"C:\\uninstall.exe"_s), rotated_name(u"UEME_CTLSESSION"_s)},
             3},
            {compatibility_store_key, {}, {u"C:\\App\\app.exe"_s, u"D:\\app.exe"_s}, 0},
            {hide_desktop_icons_key, {u"NewStartPanel"_s}, class_ids(), 1},
            {name_space_key, class_ids(), {u""_s, u"InfoTip"_s}, 1}};
}

/// The usual ones come first, so that later artefacts leave them their choices.
QList<grown_hive::growth> grown_hive::growths_of(hive_kind kind, const QVariantList &artifacts)
{
    constexpr int most_levels = 3;
    const QStringList &names = application_names();
    QList<growth> growths = usual_growths(kind);
    for (const QVariantMap &key : described_keys(kind, artifacts)) {
        const QString path = key.value(u"path"_s).toString();
        const int levels = std::min(key.value(u"last_level"_s).toInt(), most_levels);
        if (std::none_of(growths.cbegin(), growths.cend(),
                         [&](const growth &known) { return known.path == path; }))
            growths.append({path, names, names, levels});
    }
    return growths;
}

/// Makes the key, noting those on the way to it.
hive_key &grown_hive::key_at(const QString &path)
{
    hive_key *key = &m_hive.root();
    const QStringList parts = path.split(u'\\');
    for (const QString &part : parts) {
        key = &key->key(part);
        if (!m_keys.contains(key))
            m_keys.append(key);
    }
    return *key;
}

void grown_hive::grow(hive_key &key, const growth &plan, int levels)
{
    key.last_write(last_write());
    key.list_kind(
        m_choices.pick(QList<subkey_list>{subkey_list::automatic, subkey_list::li, subkey_list::lf,
                                          subkey_list::lh, subkey_list::ri}));
    grow_values(key, plan);
    if (levels == 0 && !m_choices.one_in(16))
        return;
    const qsizetype subkeys = count();
    for (qsizetype i = 0; i < subkeys && m_keys.size() < most_parts; ++i)
        grow(added_key(key, plan), plan, std::max(0, levels - 1));
}

hive_key &grown_hive::added_key(hive_key &parent, const growth &plan)
{
    hive_key &key = parent.add_key(name(plan.subkey_names));
    m_keys.append(&key);
    return key;
}

void grown_hive::grow_values(hive_key &key, const growth &plan)
{
    const qsizetype values = count();
    for (qsizetype i = 0; i < values && m_values.size() < most_parts; ++i) {
        const quint32 type = m_choices.pick(
            QList<quint32>{reg_sz, reg_binary, reg_dword, reg_multi_sz, reg_qword, 0xdeadbeef});
        key.value(name(plan.value_names), type, value_data());
        m_values.append({&key, i});
    }
}

/// Mostly few; now and then none, and seldom more than one list page holds.
qsizetype grown_hive::count()
{
    if (m_choices.one_in(100))
        return 600;
    return m_choices.pick(QList<qsizetype>{1, 1, 1, 2, 2, 3, 5, 0, 0, 1, 1, 1, 2, 2, 3, 20});
}

hive_name grown_hive::name(const QStringList &usual)
{
    if (m_choices.one_in(6)) {
        const odd_name &odd = m_choices.pick(odd_names());
        return hive_name::raw(odd.stored, odd.compressed);
    }
    const QString text = usual.isEmpty() ? u"name"_s : m_choices.pick(usual);
    if (m_choices.one_in(4))
        return text + QString::number(m_choices.up_to(255));
    return m_choices.one_in(4) ? hive_name::utf16(text) : hive_name(text);
}

QByteArray grown_hive::value_data()
{
    static const QList<qsizetype> sizes{72, 4,  0,  1,    2,     3,     5,     8,
                                        60, 64, 68, 4095, 16344, 16345, 33000, 70};
    switch (m_choices.up_to(3)) {
    case 0:
        return user_assist_data(m_choices.byte(), last_write());
    case 1:
        return registry_text(QString::fromUtf8(m_choices.bytes(8)));
    case 2:
        return registry_dword(m_choices.byte() % 3);
    default:
        return m_choices.bytes(m_choices.pick(sizes));
    }
}

qint64 grown_hive::last_write()
{
    static const QList<qint64> usual{filetime_of_1970 + 1,
                                     0,
                                     -1,
                                     filetime_of_1970,
                                     std::numeric_limits<qint64>::min(),
                                     std::numeric_limits<qint64>::max()};
    if (m_choices.one_in(4))
        return static_cast<qint64>(m_choices.up_to(~quint64(0)));
    return m_choices.pick(usual);
}

QList<value_cells> grown_hive::values() const
{
    QList<value_cells> cells;
    for (const value_place &value : m_values)
        cells.append(value.key->cells_of_value(value.index));
    return cells;
}

} // namespace evidence
