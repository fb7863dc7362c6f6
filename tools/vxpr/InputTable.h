#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Vxpr {

/// The values of an input variable, one row a frame, read row by row from a file.
class InputTable {
public:
    virtual ~InputTable() = default;

    /// Opens a CSV file, or a NumPy array file if its name ends in .npy; "-" is CSV from the
    /// standard input. in_strInput is the name of the input variable. Throws a Failure if the file
    /// can't be used.
    static std::unique_ptr<InputTable> open(const std::string& in_strInput,
                                            const std::string& in_strPath);

    /// Replaces the contents of out_vRow by the next row; false behind the last one. Throws a
    /// Failure that names the line if it isn't made of numbers.
    virtual bool next(std::vector<double>& out_vRow) = 0;

    /// The name to call the table by in messages.
    const std::string& getName() const { return m_strName; }

protected:
    explicit InputTable(const std::string& in_strPath);

private:
    std::string m_strName;
};

} // namespace Vxpr
