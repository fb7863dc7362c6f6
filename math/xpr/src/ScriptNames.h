#pragma once

namespace Velmora::Math::Xpr {

/// Where the name ends that begins at the start of a text; the start if none does.
const char* nameEnd(const char* in_pText, const char* in_pEnd);

/// Can the start of a text be that of a call or of a function's definition: a name, qualified or
/// not, and one of "(" and "<"? A comment and many blanks may hide anything: true then.
bool mayBeginCall(const char* in_pText, const char* in_pEnd);

} // namespace Velmora::Math::Xpr
