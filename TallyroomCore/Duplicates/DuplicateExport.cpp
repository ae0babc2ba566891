#include "Duplicates/DuplicateExport.h"

#include "Text/CSVExport.h"

namespace tallyroom::DuplicateExport {

std::string header()
{
    return std::string{"Groupe,"}.append(CSVExport::header);
}

std::string line(const DuplicateGroup& group, const Entry& entry)
{
    return CSVExport::escape(group.id).append(",").append(CSVExport::line(entry));
}

} // namespace tallyroom::DuplicateExport
