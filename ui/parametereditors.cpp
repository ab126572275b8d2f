#include "parametereditors.h"

#include "booleditor.h"
#include "chareditor.h"
#include "filtercolumnseditor.h"
#include "ifeditor.h"
#include "inteditor.h"
#include "longtexteditor.h"
#include "multiplecolumnseditor.h"
#include "realeditor.h"
#include "renamecolumnseditor.h"
#include "reordercolumnseditor.h"
#include "replacetermseditor.h"
#include "scripteditor.h"
#include "selectioneditor.h"
#include "singlecolumneditor.h"
#include "sortcolumnseditor.h"
#include "splitrowseditor.h"
#include "texteditor.h"
#include "uniqueeditor.h"
#include "verifyruleseditor.h"

namespace {

using Make = ParameterEditor *(*)(QWidget *parent);

template <class Editor>
ParameterEditor *make(QWidget *parent)
{
    return new Editor(parent);
}

// In the order of ParameterType.
constexpr Make makers[] = {
    make<SingleColumnFilteredParameterWidget>,
    make<MultipleColumnsParameterWidget>,
    make<SortColumnsParameterWidget>,
    make<FilterColumnsParameterWidget>,
    make<ReorderColumnsParameterWidget>,
    make<BoolParameterWidget>,
    make<SelectionParameterWidget>,
    make<TextParameterWidget>,
    make<IntParameterWidget>,
    make<CharParameterWidget>,
    make<IfParameterWidget>,
    make<MultipleColumnsParameterWidget>, // ColumnSet
    make<ScriptParameterWidget>,
    make<RenameColumnsParameterWidget>,
    make<SplitRowsParameterWidget>,
    make<UniqueParameterWidget>,
    make<ReplaceTermsParameterWidget>,
    make<RealParameterWidget>,
    make<LongTextParameterWidget>,
    make<VerifyRulesParameterWidget>,
};
static_assert(std::size(makers) == size_t(ParameterType::VerifyRules) + 1);

} // namespace

ParameterEditor *makeParameterEditor(ParameterType type, QWidget *parent)
{
    return makers[size_t(type)](parent);
}
