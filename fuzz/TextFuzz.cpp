// What goes into exports and onto terminals: fields of CSV, UTF-8.
#include "Require.h"
#include "Text/CSVExport.h"
#include "Text/Utf8.h"

namespace {

using namespace tallyroom;

/// Reads a field as a spreadsheet does; what follows the field's end must not be there.
std::string readField(const std::string& written)
{
    std::string field;
    const bool isQuoted = written.starts_with('"');
    for (std::size_t i = isQuoted ? 1 : 0; i < written.size(); ++i) {
        const bool isLineFeed = written[i] == '\n' && (i == 0 || written[i - 1] != '\r');
        require(isQuoted || (written[i] != ',' && written[i] != '"' && !isLineFeed),
                "a bare field ends last");
        if (isQuoted && written[i] == '"') {
            ++i;
            require(i == written.size() || written[i] == '"', "a quoted field ends last");
            require(i < written.size() || field.size() + 2 <= written.size(), "a quoted field is closed");
            if (i == written.size()) {
                return field;
            }
        }
        field.push_back(written[i]);
    }
    require(!isQuoted, "a quoted field is closed");
    return field;
}

void checkUtf8(std::string_view text)
{
    bool isValid = true;
    for (std::string_view rest = text; !rest.empty() && isValid;) {
        const std::size_t length = Utf8::characterLength(rest);
        require(length <= 4 && length <= rest.size(), "a character lies within the text");
        isValid = length > 0;
        rest.remove_prefix(length);
    }
    require(Utf8::isValid(text) == isValid, "a text is as valid as its characters");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text = bytes(data, size);
    require(readField(CSVExport::escape(text)) == text, "a field is read as it was");
    checkUtf8(text);
    return 0;
}
