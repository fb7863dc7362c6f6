#pragma once

/// Every exported class of the engine and of the layers beneath it. One include a line, sorted:
/// a header that is missing here fails a test.

#include <velmora/DeepCall.h>
#include <velmora/Export.h>
#include <velmora/math/DoubleVector.h>
#include <velmora/math/xpr/Argument.h>
#include <velmora/math/xpr/BinaryOperator.h>
#include <velmora/math/xpr/BinaryOperatorImpl.h>
#include <velmora/math/xpr/Constant.h>
#include <velmora/math/xpr/ConstantBase.h>
#include <velmora/math/xpr/ConstantImpl.h>
#include <velmora/math/xpr/Dictionnary.h>
#include <velmora/math/xpr/DomainValue.h>
#include <velmora/math/xpr/DomainValueBase.h>
#include <velmora/math/xpr/DomainValueNoCopyImpl.h>
#include <velmora/math/xpr/DomainVariableImpl.h>
#include <velmora/math/xpr/Expression.h>
#include <velmora/math/xpr/ExpressionBaseImpl.h>
#include <velmora/math/xpr/ExpressionImplCopier.h>
#include <velmora/math/xpr/Function.h>
#include <velmora/math/xpr/FunctionBaseImpl.h>
#include <velmora/math/xpr/InvalidExpression.h>
#include <velmora/math/xpr/InvalidVariable.h>
#include <velmora/math/xpr/OperatorConcatenate.h>
#include <velmora/math/xpr/OperatorDivide.h>
#include <velmora/math/xpr/OperatorIf.h>
#include <velmora/math/xpr/OperatorMinus.h>
#include <velmora/math/xpr/OperatorMultiply.h>
#include <velmora/math/xpr/OperatorPlus.h>
#include <velmora/math/xpr/OperatorSlice.h>
#include <velmora/math/xpr/Optimizer.h>
#include <velmora/math/xpr/Parameter.h>
#include <velmora/math/xpr/ParameterImpl.h>
#include <velmora/math/xpr/Registry.h>
#include <velmora/math/xpr/ScriptFunctionImpl.h>
#include <velmora/math/xpr/ScriptLoader.h>
#include <velmora/math/xpr/ScriptLoaderImpl.h>
#include <velmora/math/xpr/ScriptLoaderStdIO.h>
#include <velmora/math/xpr/ScriptLoaderVFS.h>
#include <velmora/math/xpr/ScriptParser.h>
#include <velmora/math/xpr/Variable.h>
#include <velmora/math/xpr/VariableImpl.h>
#include <velmora/math/xpr/XaryFunction.h>
#include <velmora/math/xpr/XprParamDefs.h>
