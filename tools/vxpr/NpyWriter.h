#pragma once

#include "TableWriter.h"

#include <cstdint>

namespace Vxpr {

/// A NumPy array file: one record for each row, whose fields are `time` and the columns, all of
/// them 64-bit floats; a column of several elements is a field with a shape. Where there is no
/// value stands a not-a-number.
///
/// The number of records stands in the header and is known at the end only, so the output must be a
/// regular file.
class NpyWriter : public TableWriter {
public:
    /// in_Output must outlive the writer.
    explicit NpyWriter(Output& in_Output) : m_Output(in_Output) {}

    bool hasFixedWidths() const override { return true; }
    void begin(const std::vector<Column>& in_vColumns) override;
    void writeRow(double in_dTime, const std::vector<Cell>& in_vCells) override;
    void end() override;

private:
    std::string makeHeader() const;
    void writeValue(double in_dValue);

    Output& m_Output;
    std::vector<Column> m_vColumns;
    std::uint64_t m_uiRows = 0;
};

} // namespace Vxpr
