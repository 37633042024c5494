#include "derivations.h"

#include "program_names.h"
#include "time_texts.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

void set_unless_empty(cell &made, std::string_view text)
{
    if (text.empty())
        made.set_null();
    else
        made.set_text(text);
}

void fill_utc(const cell &stored, const cell & /*companion*/, cell *made)
{
    if (stored.integer() == 0)
        made[0].set_null();
    else
        made[0].set_text(utc_text(stored.number));
}

void fill_iso_day(const cell &stored, const cell & /*companion*/, cell *made)
{
    if (const auto day = iso_day(stored.text()))
        made[0].set_text(*day);
    else
        made[0] = stored;
}

void fill_program(const cell &stored, const cell & /*companion*/, cell *made)
{
    const program_name name = resolve_program_name(stored.text());
    const bool is_text = stored.is == cell::kind::text;
    set_unless_empty(made[0], name.resolved);
    set_unless_empty(made[1], is_text ? text_of(name.form) : std::string_view());
    set_unless_empty(made[2], name.package);
    set_unless_empty(made[3], name.publisher_id);
}

void fill_package(const cell &stored, const cell & /*companion*/, cell *made)
{
    const auto parts = split_package_name(stored.text());
    set_unless_empty(made[0], parts ? parts->name : std::string_view());
    set_unless_empty(made[1], parts ? parts->publisher_id : std::string_view());
}

void fill_run_meaning(const cell &stored, const cell &companion, cell *made)
{
    if (stored.is != cell::kind::integer)
        made[0].set_null();
    else
        made[0].set_text(meaning_of_runs(stored.number, companion.integer()));
}

column derived(const column &stored, const QString &suffix, const QString &meaning, bool is_shown)
{
    return {stored.name + suffix, meaning, column_kind::text, true, is_shown, false,
            file_time::none};
}

} // namespace

std::string_view meaning_of_runs(qint64 count, qint64 last_run)
{
    if (count > 0)
        return last_run != 0 ? "counted" : "counted, without a time";
    return last_run != 0 ? "used at that time, not counted" : "listed, never counted";
}

QList<column> columns_derived_of(const column &stored)
{
    switch (stored.kind) {
    case column_kind::unix_time: {
        column utc = derived(stored, u"_utc"_s, stored.meaning + ", in UTC"_L1, true);
        utc.kind = column_kind::utc_time;
        return {utc};
    }
    case column_kind::install_date:
        return {derived(stored, u"_iso"_s, u"the same day as ISO 8601; other texts as they are"_s,
                        true)};
    case column_kind::program: {
        column resolved = derived(stored, u"_resolved"_s,
                                  u"the name with known folders and applications named"_s, true);
        resolved.is_subject = true;
        return {resolved, derived(stored, u"_form"_s, u"what kind of name it is"_s, false),
                derived(stored, u"_package"_s, u"name of its package"_s, false),
                derived(stored, u"_publisher_id"_s, u"publisher of its package"_s, false)};
    }
    case column_kind::package:
        return {derived(stored, u"_package"_s, u"name of the package"_s, true),
                derived(stored, u"_publisher_id"_s, u"publisher of the package"_s, true)};
    case column_kind::run_count:
        return {derived(stored, u"_meaning"_s, u"what count and time tell together"_s, false)};
    default:
        return {};
    }
}

derivation derivation_of(column_kind kind)
{
    switch (kind) {
    case column_kind::unix_time:
        return {-1, -1, -1, fill_utc};
    case column_kind::install_date:
        return {-1, -1, -1, fill_iso_day};
    case column_kind::program:
        return {-1, -1, -1, fill_program};
    case column_kind::package:
        return {-1, -1, -1, fill_package};
    case column_kind::run_count:
        return {-1, -1, -1, fill_run_meaning};
    default:
        return {-1, -1, -1, nullptr};
    }
}

} // namespace results
