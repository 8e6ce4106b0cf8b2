// SPDX-License-Identifier: MIT
#include "c/convert.h"

namespace vok::c {

namespace {

// Both sides number the types alike.
constexpr u2_t TYPES[][2] = {
    {VOK_TREE_TYPE_EMPTY, Data_Node::Empty},     {VOK_TREE_TYPE_BOOLEAN, Data_Node::Boolean},
    {VOK_TREE_TYPE_INTEGER, Data_Node::Integer}, {VOK_TREE_TYPE_CHAR, Data_Node::Char},
    {VOK_TREE_TYPE_FLOAT, Data_Node::Float},     {VOK_TREE_TYPE_DOUBLE, Data_Node::Double},
    {VOK_TREE_TYPE_DATE, Data_Node::Date},       {VOK_TREE_TYPE_STRING, Data_Node::String},
    {VOK_TREE_TYPE_BINARY, Data_Node::Binary},   {VOK_TREE_TYPE_LONG, Data_Node::Long},
    {VOK_TREE_TYPE_QUAD, Data_Node::Quad},       {VOK_TREE_TYPE_LINK, Data_Node::Link},
    {VOK_TREE_TYPE_TREE, Data_Node::Tree},       {VOK_TREE_TYPE_REMOVED, Data_Node::Zombi},
};
static_assert([] {
    for (const auto& [uHere, uThere] : TYPES) {
        if (uHere != uThere) return false;
    }
    return true;
}());

}  // namespace

u2_t BlockSize(const void* pBytes, std::size_t uSize) {
    if (pBytes == nullptr && uSize != 0) RaiseArgument("bytes");
    return Msg::ToU2(uSize);
}

Data_Value FromC(const vok_tree_value& oValue) {
    const auto& o = oValue.as;
    switch (oValue.type) {
        case VOK_TREE_TYPE_EMPTY: return {};
        case VOK_TREE_TYPE_BOOLEAN: return Data_Value(o.integer != 0);
        case VOK_TREE_TYPE_INTEGER: return Data_Value(o.integer);
        case VOK_TREE_TYPE_CHAR: return Data_Value::Char(o.character);
        case VOK_TREE_TYPE_FLOAT: return Data_Value::Float(o.real);
        case VOK_TREE_TYPE_DOUBLE: return Data_Value(o.real);
        case VOK_TREE_TYPE_DATE: return Data_Value::Date(o.real);
        case VOK_TREE_TYPE_STRING: {
            std::string_view s = Text(o.text.data, o.text.size, "value");
            if (o.text.size != VOK_TREE_TO_NUL) s = s.substr(0, s.find('\0'));
            return Data_Value(s);
        }
        case VOK_TREE_TYPE_BINARY:
            return Data_Value::Binary(o.bytes.data, BlockSize(o.bytes.data, o.bytes.size));
        case VOK_TREE_TYPE_LONG: return Data_Value(o.whole);
        case VOK_TREE_TYPE_QUAD:
            return Data_Value::Quad(o.quad[0], o.quad[1], o.quad[2], o.quad[3]);
        case VOK_TREE_TYPE_LINK: return Data_Value::Link(Text(o.text.data, o.text.size, "value"));
        default: RaiseArgument("value");
    }
}

vok_tree_value ToC(const Data_Value& oValue) noexcept {
    vok_tree_value o = {};
    o.type = static_cast<int32_t>(oValue.GetType());
    switch (oValue.GetType()) {
        case Data_Node::Boolean:
        case Data_Node::Integer: o.as.integer = oValue.Int(); break;
        case Data_Node::Char: o.as.character = static_cast<u2_t>(oValue.Int()); break;
        case Data_Node::Float:
        case Data_Node::Double:
        case Data_Node::Date: o.as.real = oValue.Dbl(); break;
        case Data_Node::String:
        case Data_Node::Link: o.as.text = {oValue.Text().data(), oValue.Text().size()}; break;
        case Data_Node::Binary: o.as.bytes = {oValue.Text().data(), oValue.Text().size()}; break;
        case Data_Node::Long: o.as.whole = oValue.Lng(); break;
        case Data_Node::Quad:
            for (std::size_t u = 0; u < 4; ++u) o.as.quad[u] = oValue.QuadWords()[u];
            break;
        case Data_Node::Empty:
        case Data_Node::Tree:
        case Data_Node::Zombi: break;
    }
    return o;
}

vok_tree_report ToC(const Load_Report& oReport) noexcept {
    vok_tree_report o = {};
    o.offset = oReport.m_uOffset;
    o.line = oReport.m_uLine;
    o.column = oReport.m_uColumn;
    o.nodes = oReport.m_uNodes;
    o.bytes_left = oReport.m_uBytesLeft;
    o.missing_bytes = oReport.m_uMissingBytes;
    o.missing_nodes = oReport.m_uMissingNodes;
    o.dropped_texts = oReport.m_uDroppedTexts;
    o.kept_references = oReport.m_uKeptReferences;
    o.reordered = oReport.m_uReordered;
    o.comments = oReport.m_uComments;
    o.instructions = oReport.m_uInstructions;
    o.rounded = oReport.m_uRounded;
    CopyCut(oReport.m_oPath.View(), o.path, sizeof(o.path));
    return o;
}

}  // namespace vok::c
