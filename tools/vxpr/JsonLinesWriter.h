#pragma once

#include "TableWriter.h"

namespace Vxpr {

/// JSON lines: an object for each row, such as {"time":0.02,"level":-31.5,"bands":[1,2]}.
///
/// A value of one element is a number, any other an array of its own size, and null stands for
/// none. JSON has no numbers beyond the finite ones: "NaN", "Infinity" and "-Infinity" are texts.
class JsonLinesWriter : public TableWriter {
public:
    /// in_Output must outlive the writer.
    explicit JsonLinesWriter(Output& in_Output) : m_Output(in_Output) {}

    bool hasFixedWidths() const override { return false; }
    void begin(const std::vector<Column>& in_vColumns) override;
    void writeRow(double in_dTime, const std::vector<Cell>& in_vCells) override;
    void end() override {}

private:
    void writeValue(double in_dValue);

    Output& m_Output;
    std::vector<std::string> m_vKeys;
};

} // namespace Vxpr
