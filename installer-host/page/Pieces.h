#pragma once

#include <string>
#include <utility>
#include <vector>

#include "installer-host/page/Markup.h"
#include "installer-host/report/JsonReport.h"

namespace host::page {

/// How a state is to be taken. A mood has a sign and a colour, which help the eye; the word beside them says all.
enum class Mood { Good, Bad, Attention, Added, Changed, Removed, Moved, Quiet };

/// "✓ done": the mood's sign and `word`.
Markup state(Mood mood, const std::string& word);

/// Text that somebody else wrote, on one line and apart from the text around it: Icon\r. What looks like an escape in
/// it is escaped again, as in the other reports.
Markup foreign(const std::string& text);

/// The same for a path or another long name, which may be broken after its separators.
Markup path(const std::string& text);

/// Text of more than one line, as the person saw whom it was meant for. It escapes no quotes.
Markup lines(const std::string& text);

/// A value of a property list with its type, or that there is none when it is null.
Markup typedValue(const Json& value);

/// A heading of the level (2 to 6) and what it stands above. Links can lead to it by `anchor`, if that is not empty.
Markup section(int level, const Markup& title, const Markup& content, const std::string& anchor = "");

/// Content that a click on `summary` shows and hides.
Markup disclosure(const Markup& summary, const Markup& content, bool isOpen = false);

/// Names and what they stand for, as a list. Facts without content are left out.
using Facts = std::vector<std::pair<std::string, Markup>>;
Markup factList(const Facts& facts);

/// A list without an order.
Markup list(const std::string& classes, const std::vector<Markup>& items);

/// A table whose rows each have a head in the first column.
class Table {
public:
    Table(const char* caption, std::vector<std::string> titles);

    /// Adds a row with a cell for each column.
    void add(const std::vector<Markup>& cells, const char* classes = "");

    /// With the class "lines", each cell becomes a line of its own on a narrow page, after the title of its column.
    Markup markup(const std::string& classes = "lines") const;

private:
    const char* caption_;
    std::vector<std::string> titles_;
    Markup rows_;
};

}  // namespace host::page
