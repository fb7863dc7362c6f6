#include "InputTable.h"

#include "CsvTable.h"
#include "FileEnding.h"
#include "NpyTable.h"

namespace Vxpr {

InputTable::InputTable(const std::string& in_strPath)
    : m_strName(in_strPath == "-" ? "the standard input" : "'" + in_strPath + "'") {}

std::unique_ptr<InputTable> InputTable::open(const std::string& in_strInput,
                                             const std::string& in_strPath) {
    if (hasEnding(in_strPath, ".npy")) {
        return std::make_unique<NpyTable>(in_strPath);
    }
    return std::make_unique<CsvTable>(in_strInput, in_strPath);
}

} // namespace Vxpr
