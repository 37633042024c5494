#ifndef EARLIER_RESULTS_H
#define EARLIER_RESULTS_H

#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

#include "described_source.h"
#include "exit_code.h"
#include "result_location.h"
#include "run_record.h"

/// What the examiner wants with results that a folder holds already.
struct earlier_results_wish
{
    bool replace = false;        ///< give up what is there, whatever it is of
    bool add = false;            ///< keep it, and add the rows of a further source
    bool add_same_again = false; ///< even if that source is there already
};

/// What a run does with the earlier results.
struct result_mode
{
    enum class kind
    {
        first,   ///< there are none
        again,   ///< the same source: rows of the selected tabs are replaced
        replace, ///< the database is made anew
        add      ///< rows stay
    };

    kind is = kind::first;
    int source_number = 1;
};

/// The mode's name in the run record.
QString name_of(result_mode::kind mode);

/// A mode, or why there is none.
struct chosen_mode
{
    result_mode mode;
    std::optional<refusal> refused;
};

/// Decides from the run record and the database. Results without a record are of an unknown source.
/// `tables` are all that the plug-in fills.
chosen_mode choose_mode(const run_record &record, const result_location &location,
                        const QStringList &tables, const described_source &source,
                        const earlier_results_wish &wish);

/// Removes the database and what SQLite made beside it. Why that failed, or an empty text.
QString remove_database(const QString &database_file);

#endif
