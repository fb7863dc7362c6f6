#include "LuaProgram.h"

#include <lua.hpp>

#include "Host.h"

namespace Velmora::Benchmarks {

LuaProgram::LuaProgram(const std::string& in_strText) : m_pState(luaL_newstate()) {
    if (luaL_loadstring(m_pState, in_strText.c_str()) != LUA_OK) {
        const std::string strError = lua_tostring(m_pState, -1);
        lua_close(m_pState);
        throw WrongResult(strError);
    }
}

LuaProgram::~LuaProgram() {
    lua_close(m_pState);
}

double LuaProgram::run(const char* in_szInput, double in_dInput, const char* in_szResult) {
    lua_pushnumber(m_pState, in_dInput);
    lua_setglobal(m_pState, in_szInput);
    lua_pushvalue(m_pState, 1);
    lua_call(m_pState, 0, 0);
    lua_getglobal(m_pState, in_szResult);
    const double dResult = lua_tonumber(m_pState, -1);
    lua_pop(m_pState, 1);
    return dResult;
}

} // namespace Velmora::Benchmarks
