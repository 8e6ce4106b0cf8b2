// SPDX-License-Identifier: MIT
// What the printers are tried on: stopped at Here, with a tree in order, one that is being built,
// and one without nodes.
#include "vok/data/data.h"
#include "vok/data/succ_it.h"
#include "vok/data/view.h"

namespace {

[[gnu::noinline]] void Here(const void* p) {
    asm volatile("" : : "r"(p) : "memory");
}

}  // namespace

int main() {
    vok::Data root;
    root.SetToRoot();
    root.Rename("orders");
    root.CreateNode("/order[1][@id=\"7\"][@state=\"open\"]/price").SetValDbl(9.5);
    root.CreateNode("/order[1]/note").SetValStr("a \"text\"\n\x1b[2J");
    root.CreateNode("/order[1]/when").SetValDbl(86400.5, vok::Data_Node::Date);
    root.CreateNode("/order[0]/count").SetValInt(-3);
    root.CreateNode("/order[0]/open").SetValBool(true);
    root.CreateNode("/order[0]/big").SetValLng(vok::u3_t{1} << 63);
    root.CreateNode("/order[0]/same").SetValLink(root.CreateNode("/order[1]"));
    vok::Data node = root.GetNodeSet("/order[1]/price").GetNth(0);
    const vok::Data_View view(root.GetNodeSet("/order[0]/count").GetNth(0));
    vok::Data pending;
    pending.SetToRoot();
    for (const char* name : {"b", "a", "b"}) pending.Append(name).SetValStr(name);
    vok::Data none;
    vok::Str text(
        "Gr\xC3\xB6\xC3\x9F"
        "e");
    vok::Arr<int> numbers;
    for (int i = 1; i < 4; ++i) numbers.Add(i * i);
    Here(&root);
    Here(&view);
    Here(&numbers);
    return none.IsNode() ? 1 : 0;
}
