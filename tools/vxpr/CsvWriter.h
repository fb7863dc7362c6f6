#pragma once

#include "TableWriter.h"

namespace Vxpr {

/// Comma-separated values: a line of names, then a line for each row. Every number reads back as
/// the same double.
class CsvWriter : public TableWriter {
public:
    /// in_Output must outlive the writer.
    explicit CsvWriter(Output& in_Output) : m_Output(in_Output) {}

    bool hasFixedWidths() const override { return true; }
    void begin(const std::vector<Column>& in_vColumns) override;
    void writeRow(double in_dTime, const std::vector<Cell>& in_vCells) override;
    void end() override {}

private:
    Output& m_Output;
    std::vector<Column> m_vColumns;
};

} // namespace Vxpr
