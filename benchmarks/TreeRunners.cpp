#include "TreeRunners.h"

#include <lua.hpp>
#include <muParser.h>

#include "Frames.h"

namespace Velmora::Benchmarks {

TreeFrames::TreeFrames() {
    Numbers numbers(4);
    for (RandomTree::Inputs& inputs : m_Frames) {
        for (double& dInput : inputs) {
            dInput = numbers.between(0.5, 1.5);
            m_vVectors.push_back(Math::DoubleVector{dInput});
        }
    }
}

namespace {

std::string toScript(const RandomTree& in_Tree) {
    std::string strScript;
    for (std::size_t uiInput = 0; uiInput != RandomTree::INPUTS; ++uiInput) {
        strScript += "inputvar " + RandomTree::nameOf(uiInput) + "\n";
    }
    return strScript + "y = " + in_Tree.toText() + "\n";
}

std::string toLua(const RandomTree& in_Tree) {
    std::string strScript = "local ";
    for (std::size_t uiInput = 0; uiInput != RandomTree::INPUTS; ++uiInput) {
        strScript += (uiInput == 0 ? "" : ", ") + RandomTree::nameOf(uiInput);
    }
    return strScript + " = ...\nreturn " + in_Tree.toText() + "\n";
}

} // namespace

TreeHost::TreeHost(const RandomTree& in_Tree)
    : m_Host(toScript(in_Tree)), m_pRoot(m_Host.getFeature("y")) {
    for (std::size_t uiInput = 0; uiInput != RandomTree::INPUTS; ++uiInput) {
        m_vInputs.push_back(m_Host.getInput(RandomTree::nameOf(uiInput)));
    }
}

TreeInMuParser::TreeInMuParser(const RandomTree& in_Tree)
    : m_pParser(std::make_unique<mu::Parser>()) {
    for (std::size_t uiInput = 0; uiInput != RandomTree::INPUTS; ++uiInput) {
        m_pParser->DefineVar(RandomTree::nameOf(uiInput), &m_Inputs[uiInput]);
    }
    m_pParser->SetExpr(in_Tree.toText());
}

TreeInMuParser::~TreeInMuParser() = default;

double TreeInMuParser::compute(const RandomTree::Inputs& in_Inputs) {
    m_Inputs = in_Inputs;
    return m_pParser->Eval();
}

TreeInLua::TreeInLua(const RandomTree& in_Tree) : m_pState(luaL_newstate()) {
    if (luaL_loadstring(m_pState, toLua(in_Tree).c_str()) != LUA_OK) {
        throw WrongResult(lua_tostring(m_pState, -1));
    }
}

TreeInLua::~TreeInLua() {
    lua_close(m_pState);
}

double TreeInLua::compute(const RandomTree::Inputs& in_Inputs) {
    lua_pushvalue(m_pState, -1);
    for (const double dInput : in_Inputs) {
        lua_pushnumber(m_pState, dInput);
    }
    lua_call(m_pState, static_cast<int>(RandomTree::INPUTS), 1);
    const double dResult = lua_tonumber(m_pState, -1);
    lua_pop(m_pState, 1);
    return dResult;
}

} // namespace Velmora::Benchmarks
