#include "LeafText.h"

#include <ostream>
#include <sstream>

namespace Velmora::Math::Xpr {

std::string makeLeafName(const char* in_szWord, const DoubleVector& in_vValue) {
    std::ostringstream stream;
    stream << in_szWord << '_';
    in_vValue.write(stream);
    return stream.str();
}

std::ostream& writeLeaf(std::ostream& out_Stream, const ExpressionBaseImpl& in_Leaf,
                        const char* in_szWord, const DoubleVector& in_vValue) {
    // Only reading is meant; the checked access exists in one form.
    DoubleVector& vValue = const_cast<DoubleVector&>(in_vValue);
    out_Stream << in_Leaf.getDotName() << " [shape=parallelogram label=\"" << in_szWord << '_'
               << in_Leaf.getId() << "\\n{" << vValue.at(0);
    if (in_vValue.size() > 1) {
        out_Stream << ' ' << vValue.at(1);
    }
    if (in_vValue.size() > 2) {
        out_Stream << " ...";
    }
    return out_Stream << "}\"]\n";
}

} // namespace Velmora::Math::Xpr
