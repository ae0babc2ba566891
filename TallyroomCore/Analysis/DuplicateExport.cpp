#include "Analysis/DuplicateExport.h"

#include "Text/CSVExport.h"

namespace tallyroom::DuplicateExport {

std::string header()
{
    return std::string{"Groupe,"}.append(CSVExport::header);
}

std::string lines(const DuplicateGroup& group)
{
    std::string text;
    const std::string first = "\n" + CSVExport::escape(group.id) + ",";
    for (const Entry& entry : group.entries) {
        text.append(first).append(CSVExport::line(entry));
    }
    return text;
}

} // namespace tallyroom::DuplicateExport
