#pragma once

#include <string>

struct lua_State;

namespace Velmora::Benchmarks {

/// A program that Lua has loaded: compiled, and not run yet.
class LuaProgram {
public:
    /// Throws `WrongResult` if Lua refuses the text.
    explicit LuaProgram(const std::string& in_strText);
    ~LuaProgram();
    LuaProgram(const LuaProgram&) = delete;
    LuaProgram& operator=(const LuaProgram&) = delete;

    /// Sets a global variable, runs the program, and returns another.
    double run(const char* in_szInput, double in_dInput, const char* in_szResult);

private:
    lua_State* m_pState;
};

} // namespace Velmora::Benchmarks
