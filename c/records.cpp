// SPDX-License-Identifier: MIT
// Documents node by node.
#include "c/vok_tree_records.h"

#include <optional>

#include "c/convert.h"
#include "c/output.h"
#include "c/stream.h"
#include "vok/file/buf.h"
#include "vok/records/reader.h"
#include "vok/records/records.h"
#include "vok/records/writer.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::CopyOut;
using c::Find;
using c::Give;
using c::Out;
using c::Text;
using c::Use;

static_assert(VOK_TREE_UNKNOWN == Data_Record::UNKNOWN);

namespace vok::c {

// A document that is gone through by a reader, or by what is over one.
template <char KIND, class Reader>
struct Source : Handle<KIND> {
    enum class State { Before, At, Behind, Failed };

    std::unique_ptr<File_Stream> m_pIn;  // null for a file
    std::optional<Reader> m_oFrom;
    State m_eState = State::Before;
};

}  // namespace vok::c

struct vok_tree_reader : c::Source<'r', Data_Reader> {};
struct vok_tree_records : c::Source<'p', Records> {};

struct vok_tree_writer : c::Handle<'w'> {
    std::optional<c::Output> m_oOutput;
    std::optional<Data_Writer> m_oWriter;  // null once all is written
};

namespace {

// ---- reading ----------------------------------------------------------------

Load_Report ReportOf(const Data_Reader& o) {
    return o.GetReport();
}
Load_Report ReportOf(const Records& o) {
    return o.GetReader().GetReport();
}

template <class H, class F>
vok_tree_status Open(const char* sName, H** ppHandle, F&& oOpen) noexcept {
    return Call(sName, [&] {
        Give(ppHandle, "handle", [&] {
            auto pHandle = std::make_unique<H>();
            oOpen(*pHandle);
            return pHandle.release();
        });
    });
}
// oMore stands behind the input: a path if there is one, and the limits.
template <class H, class... More>
vok_tree_status OpenFile(const char* sName, H** ppHandle, const char* sFile,
                         const More&... oMore) noexcept {
    return Open(sName, ppHandle, [&](H& o) { o.m_oFrom.emplace(Str(c::Path(sFile)), oMore...); });
}
template <class H, class... More>
vok_tree_status OpenMemory(const char* sName, H** ppHandle, const void* pBytes, std::size_t uSize,
                           const More&... oMore) noexcept {
    return Open(sName, ppHandle, [&](H& o) {
        if (pBytes == nullptr && uSize != 0) c::RaiseArgument("bytes");
        o.m_pIn = std::make_unique<File_Buf>(pBytes, uSize);
        o.m_oFrom.emplace(*o.m_pIn, oMore...);
    });
}
template <class H, class... More>
vok_tree_status OpenStream(const char* sName, H** ppHandle, const vok_tree_stream* pStream,
                           const More&... oMore) noexcept {
    return Open(sName, ppHandle, [&](H& o) {
        o.m_pIn = std::make_unique<c::HostStream>(Out(pStream, "stream"));
        o.m_oFrom.emplace(*o.m_pIn, oMore...);
    });
}

// Runs what moves a source; where it fails there is no way on.
template <class H, class F>
void Move(H& o, F&& oBody) {
    try {
        oBody();
    } catch (...) {
        o.m_eState = H::State::Failed;
        c::KeepPlace(ReportOf(*o.m_oFrom));
        throw;
    }
}
// To what comes next; false where there is nothing any more.
template <class H>
bool Next(H& o) {
    if (o.m_eState == H::State::Failed) c::RaiseArgument("handle");
    if (o.m_eState == H::State::Behind) return false;
    Move(o, [&] { o.m_eState = o.m_oFrom->Next() ? H::State::At : H::State::Behind; });
    return o.m_eState == H::State::At;
}

// The shell of questions about what a source is at.
template <class H, class F>
vok_tree_status WhereAt(const char* sName, H* pHandle, F&& oBody) noexcept {
    return Call(sName, [&]() -> vok_tree_status {
        auto& o = Use(pHandle, "handle");
        return o.m_eState == H::State::At ? oBody(o) : VOK_TREE_NONE;
    });
}
template <class H>
vok_tree_status PathOf(const char* sName, const H* pHandle, char* pBuffer, std::size_t uRoom,
                       std::size_t* pLength) noexcept {
    return WhereAt(sName, pHandle, [&](const H& o) {
        return CopyOut(o.m_oFrom->GetPath().View(), pBuffer, uRoom, pLength);
    });
}

// ---- writing ----------------------------------------------------------------

Data_Writer::Form WriterForm(int32_t iForm) {
    const int32_t iKind = iForm & c::FORM;
    const bool bGood = (iForm & ~(c::FORM | c::WRAPPING)) == 0 &&
                       (iForm & c::WRAPPING) != VOK_TREE_ZIP &&
                       (iKind == VOK_TREE_XML || iKind == VOK_TREE_DGRAPH);
    if (!bGood) c::RaiseArgument("form");
    return iKind == VOK_TREE_XML ? Data_Writer::Form::Xml : Data_Writer::Form::DGraph;
}

template <class Below>
void OpenWriter(vok_tree_writer** ppWriter, Below oBelow, int32_t iForm, Data_Writer::Form eForm) {
    Give(ppWriter, "writer", [&] {
        auto pWriter = std::make_unique<vok_tree_writer>();
        pWriter->m_oOutput.emplace(std::move(oBelow), iForm);
        pWriter->m_oWriter.emplace(pWriter->m_oOutput->Stream(), eForm);
        return pWriter.release();
    });
}

vok_tree_writer& Unfinished(vok_tree_writer* pWriter) {
    vok_tree_writer& o = Use(pWriter, "writer");
    if (!o.m_oWriter.has_value()) c::RaiseArgument("writer");
    return o;
}
// The shell of everything that is written.
template <class F>
vok_tree_status Write(const char* sName, vok_tree_writer* pWriter, F&& oBody) noexcept {
    return Call(sName, [&] { oBody(*Unfinished(pWriter).m_oWriter); });
}

}  // namespace

// ---- reading ----------------------------------------------------------------

vok_tree_status vok_tree_reader_open_file(const char* path, const vok_tree_limits* limits,
                                          vok_tree_reader** reader) {
    return OpenFile(__func__, reader, path, c::ToLimits(limits));
}

vok_tree_status vok_tree_reader_open_memory(const void* bytes, size_t size,
                                            const vok_tree_limits* limits,
                                            vok_tree_reader** reader) {
    return OpenMemory(__func__, reader, bytes, size, c::ToLimits(limits));
}

vok_tree_status vok_tree_reader_open_stream(const vok_tree_stream* stream,
                                            const vok_tree_limits* limits,
                                            vok_tree_reader** reader) {
    return OpenStream(__func__, reader, stream, c::ToLimits(limits));
}

void vok_tree_reader_free(vok_tree_reader* reader) {
    c::Free(reader);
}

vok_tree_status vok_tree_reader_next(vok_tree_reader* reader) {
    return Call(__func__, [&] { return Next(Use(reader, "reader")); });
}

vok_tree_status vok_tree_reader_record(const vok_tree_reader* reader, vok_tree_record* record) {
    return WhereAt(__func__, reader, [&](const vok_tree_reader& o) {
        const Data_Record& r = **o.m_oFrom;
        vok_tree_record& oRecord = Out(record, "record");
        oRecord.name = r.GetName().data();
        oRecord.name_size = r.GetName().size();
        oRecord.depth = r.GetDepth();
        oRecord.index = r.GetIndex();
        oRecord.successors = r.GetType() == Data_Node::Tree ? r.GetSuccs() : 0;
        oRecord.has_target = r.HasTarget() ? 1 : 0;
        oRecord.attributes = r.GetAttributes().Size();
        oRecord.offset = r.GetOffset();
        oRecord.value = c::ToC(r);
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_attribute(const vok_tree_reader* reader, size_t nth,
                                          vok_tree_record_attribute* attribute) {
    return WhereAt(__func__, reader, [&](const vok_tree_reader& o) {
        const Arr<Data_Record::Attribute>& oAttributes = (*o.m_oFrom)->GetAttributes();
        vok_tree_record_attribute& oAttribute = Out(attribute, "attribute");
        if (nth >= oAttributes.Size()) return VOK_TREE_NONE;
        const Data_Record::Attribute& a = oAttributes(nth);
        oAttribute = {a.sName.data(), a.sName.size(), a.sValue.data(), a.sValue.size()};
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_path(const vok_tree_reader* reader, char* buffer, size_t room,
                                     size_t* length) {
    return PathOf(__func__, reader, buffer, room, length);
}

vok_tree_status vok_tree_reader_skip(vok_tree_reader* reader) {
    return WhereAt(__func__, reader, [](vok_tree_reader& o) {
        o.m_oFrom->SkipSuccessors();
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_take(vok_tree_reader* reader, vok_tree_node* node) {
    return WhereAt(__func__, reader, [&](vok_tree_reader& o) {
        Data& oNode = Use(node);
        Move(o, [&] { o.m_oFrom->Take(oNode); });
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_report(const vok_tree_reader* reader, vok_tree_report* report) {
    return Ask(__func__, report, "report",
               [&] { return c::ToC(Use(reader, "reader").m_oFrom->GetReport()); });
}

// ---- parts by a path --------------------------------------------------------

vok_tree_status vok_tree_records_open_file(const char* file, const char* path,
                                           const vok_tree_limits* limits,
                                           vok_tree_records** records) {
    return OpenFile(__func__, records, file, std::string_view(Text(path)), c::ToLimits(limits));
}

vok_tree_status vok_tree_records_open_memory(const void* bytes, size_t size, const char* path,
                                             const vok_tree_limits* limits,
                                             vok_tree_records** records) {
    return OpenMemory(__func__, records, bytes, size, std::string_view(Text(path)),
                      c::ToLimits(limits));
}

vok_tree_status vok_tree_records_open_stream(const vok_tree_stream* stream, const char* path,
                                             const vok_tree_limits* limits,
                                             vok_tree_records** records) {
    return OpenStream(__func__, records, stream, std::string_view(Text(path)), c::ToLimits(limits));
}

void vok_tree_records_free(vok_tree_records* records) {
    c::Free(records);
}

vok_tree_status vok_tree_records_next(vok_tree_records* records, vok_tree_node* found) {
    return Find(__func__, found, [&] {
        vok_tree_records& o = Use(records, "records");
        return Next(o) ? o.m_oFrom->GetData() : Data();
    });
}

vok_tree_status vok_tree_records_path(const vok_tree_records* records, char* buffer, size_t room,
                                      size_t* length) {
    return PathOf(__func__, records, buffer, room, length);
}

vok_tree_status vok_tree_records_report(const vok_tree_records* records, vok_tree_report* report) {
    return Ask(__func__, report, "report",
               [&] { return c::ToC(ReportOf(*Use(records, "records").m_oFrom)); });
}

// ---- writing ----------------------------------------------------------------

vok_tree_status vok_tree_writer_open_file(const char* path, int32_t form,
                                          vok_tree_writer** writer) {
    return Call(__func__, [&] { OpenWriter(writer, c::Path(path), form, WriterForm(form)); });
}

vok_tree_status vok_tree_writer_open_stream(const vok_tree_stream* stream, int32_t form,
                                            vok_tree_writer** writer) {
    return Call(__func__, [&] {
        const Data_Writer::Form eForm = WriterForm(form);
        std::unique_ptr<File_Stream> pOut = std::make_unique<c::HostStream>(Out(stream, "stream"));
        OpenWriter(writer, std::move(pOut), form, eForm);
    });
}

void vok_tree_writer_free(vok_tree_writer* writer) {
    c::Free(writer);
}

vok_tree_status vok_tree_writer_begin(vok_tree_writer* writer, const char* name,
                                      uint32_t successors) {
    return Write(__func__, writer, [&](Data_Writer& o) { o.Open(Text(name), successors); });
}

vok_tree_status vok_tree_writer_attribute(vok_tree_writer* writer, const char* name,
                                          const char* value) {
    return Write(__func__, writer, [&](Data_Writer& o) { o.SetAttVal(Text(name), Text(value)); });
}

vok_tree_status vok_tree_writer_value(vok_tree_writer* writer, const vok_tree_value* value) {
    return Write(__func__, writer,
                 [&](Data_Writer& o) { o.SetValue(c::FromC(Out(value, "value"))); });
}

vok_tree_status vok_tree_writer_end(vok_tree_writer* writer) {
    return Write(__func__, writer, [](Data_Writer& o) { o.Close(); });
}

vok_tree_status vok_tree_writer_add(vok_tree_writer* writer, const char* name,
                                    const vok_tree_value* value) {
    return Write(__func__, writer, [&](Data_Writer& o) {
        o.Add(Text(name), value != nullptr ? c::FromC(*value) : Data_Value());
    });
}

vok_tree_status vok_tree_writer_add_node(vok_tree_writer* writer, const vok_tree_node* node) {
    return Write(__func__, writer, [&](Data_Writer& o) { o.Add(Use(node)); });
}

vok_tree_status vok_tree_writer_add_record(vok_tree_writer* writer, const vok_tree_reader* reader) {
    return Write(__func__, writer, [&](Data_Writer& o) {
        const vok_tree_reader& oReader = Use(reader, "reader");
        if (oReader.m_eState != vok_tree_reader::State::At) c::RaiseArgument("reader");
        o.Add(**oReader.m_oFrom);
    });
}

vok_tree_status vok_tree_writer_announce(vok_tree_writer* writer, const char* path) {
    return Write(__func__, writer, [&](Data_Writer& o) { o.AnnounceTarget(Text(path)); });
}

vok_tree_status vok_tree_writer_finish(vok_tree_writer* writer) {
    return Call(__func__, [&] {
        vok_tree_writer& o = Unfinished(writer);
        o.m_oWriter->Finish();
        o.m_oWriter.reset();
        o.m_oOutput->Close();
    });
}
