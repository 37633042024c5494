#include "known_names.h"

#include <QByteArray>
#include <QString>

#include <algorithm>
#include <array>
#include <unordered_map>

#include "name_lists.h"

namespace results {

namespace {

constexpr size_t fields_of_line = 4;
using line_fields = std::array<std::string_view, fields_of_line>;

/// The fields of a line of a list, whose texts hold no commas of their own.
line_fields fields_of(std::string_view line)
{
    line_fields fields;
    for (std::string_view &field : fields) {
        const size_t comma = std::min(line.find(','), line.size());
        field = line.substr(0, comma);
        line.remove_prefix(std::min(comma + 1, line.size()));
    }
    return fields;
}

/// The entries of a list by their first fields.
template<typename Entry>
std::unordered_map<std::string_view, Entry> entries_of(std::string_view list,
                                                       Entry (*entry_of)(const line_fields &))
{
    std::unordered_map<std::string_view, Entry> entries;
    while (!list.empty()) {
        const size_t end = std::min(list.find('\n'), list.size());
        const std::string_view line = list.substr(0, end);
        if (!line.empty() && line.front() != '#') {
            const line_fields fields = fields_of(line);
            entries.emplace(fields[0], entry_of(fields));
        }
        list.remove_prefix(std::min(end + 1, list.size()));
    }
    return entries;
}

template<typename Entry>
const Entry *entry_named(const std::unordered_map<std::string_view, Entry> &entries,
                         std::string_view name)
{
    const auto found = entries.find(name);
    return found == entries.end() ? nullptr : &found->second;
}

const std::unordered_map<std::string_view, known_application> &known_applications()
{
    static const auto applications =
        entries_of<known_application>(known_applications_csv, [](const line_fields &line) {
            return known_application{line[1], line[2], line[3]};
        });
    return applications;
}

} // namespace

const known_folder *known_folder_of(std::string_view guid)
{
    static const auto folders =
        entries_of<known_folder>(known_folders_csv, [](const line_fields &line) {
            return known_folder{line[1], line[2]};
        });
    const QByteArray capitals =
        QByteArray::fromRawData(guid.data(), qsizetype(guid.size())).toUpper();
    return entry_named(folders, {capitals.constData(), size_t(capitals.size())});
}

const known_application *known_application_of(std::string_view hash)
{
    return entry_named(known_applications(), hash);
}

std::string_view display_name_of(std::string_view name)
{
    const QLatin1StringView wanted(name.data(), qsizetype(name.size()));
    for (const auto &[hash, application] : known_applications()) {
        const QLatin1StringView known(application.name.data(), qsizetype(application.name.size()));
        if (known.compare(wanted, Qt::CaseInsensitive) == 0)
            return application.display_name;
    }
    return {};
}

} // namespace results
