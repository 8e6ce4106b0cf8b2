// Documents node by node.
#include "c/vok_tree_records.h"

#include <optional>

#include "c/convert.h"
#include "c/output.h"
#include "c/stream.h"
#include "vok/file/buf.h"
#include "vok/records/reader.h"
#include "vok/records/writer.h"

using namespace vok;
using c::Ask;
using c::Call;
using c::CopyOut;
using c::Give;
using c::Out;
using c::Text;
using c::Use;

static_assert(VOK_TREE_UNKNOWN == Data_Record::UNKNOWN);

struct vok_tree_reader : c::Handle<'r'> {
    enum class State { Before, At, Behind, Failed };

    std::unique_ptr<File_Stream> m_pIn;  // null for a file
    std::optional<Data_Reader> m_oReader;
    State m_eState = State::Before;
};

struct vok_tree_writer : c::Handle<'w'> {
    std::optional<c::Output> m_oOutput;
    std::optional<Data_Writer> m_oWriter;  // null once all is written, or the stream has failed
};

namespace {

using State = vok_tree_reader::State;

// ---- reading ----------------------------------------------------------------

template <class F>
vok_tree_status Open(const char* sName, const vok_tree_limits* pLimits, vok_tree_reader** ppReader,
                     F&& oOpen) noexcept {
    return Call(sName, [&] {
        Give(ppReader, "reader", [&] {
            auto pReader = std::make_unique<vok_tree_reader>();
            oOpen(*pReader, c::ToLimits(pLimits));
            return pReader.release();
        });
    });
}

// Runs what moves a reader; where it fails there is no way on.
template <class F>
void Move(vok_tree_reader& o, F&& oBody) {
    try {
        oBody();
    } catch (...) {
        o.m_eState = State::Failed;
        c::KeepPlace(o.m_oReader->GetReport());
        throw;
    }
}

// The shell of questions about the record that a reader is at.
template <class Reader, class F>
vok_tree_status AtRecord(const char* sName, Reader* pReader, F&& oBody) noexcept {
    return Call(sName, [&]() -> vok_tree_status {
        auto& o = Use(pReader, "reader");
        return o.m_eState == State::At ? oBody(o) : VOK_TREE_NONE;
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

// The shell of everything that is written.
template <class F>
vok_tree_status Write(const char* sName, vok_tree_writer* pWriter, F&& oBody) noexcept {
    return Call(sName, [&] {
        vok_tree_writer& o = Use(pWriter, "writer");
        if (!o.m_oWriter.has_value()) c::RaiseArgument("writer");
        oBody(*o.m_oWriter);
    });
}

}  // namespace

vok_tree_status vok_tree_reader_open_file(const char* path, const vok_tree_limits* limits,
                                          vok_tree_reader** reader) {
    return Open(__func__, limits, reader, [&](vok_tree_reader& o, const Limits& oLimits) {
        o.m_oReader.emplace(Str(c::Path(path)), oLimits);
    });
}

vok_tree_status vok_tree_reader_open_memory(const void* bytes, size_t size,
                                            const vok_tree_limits* limits,
                                            vok_tree_reader** reader) {
    return Open(__func__, limits, reader, [&](vok_tree_reader& o, const Limits& oLimits) {
        if (bytes == nullptr && size != 0) c::RaiseArgument("bytes");
        o.m_pIn = std::make_unique<File_Buf>(bytes, size);
        o.m_oReader.emplace(*o.m_pIn, oLimits);
    });
}

vok_tree_status vok_tree_reader_open_stream(const vok_tree_stream* stream,
                                            const vok_tree_limits* limits,
                                            vok_tree_reader** reader) {
    return Open(__func__, limits, reader, [&](vok_tree_reader& o, const Limits& oLimits) {
        o.m_pIn = std::make_unique<c::HostStream>(Out(stream, "stream"));
        o.m_oReader.emplace(*o.m_pIn, oLimits);
    });
}

void vok_tree_reader_free(vok_tree_reader* reader) {
    c::Free(reader);
}

vok_tree_status vok_tree_reader_next(vok_tree_reader* reader) {
    return Call(__func__, [&] {
        vok_tree_reader& o = Use(reader, "reader");
        if (o.m_eState == State::Failed) c::RaiseArgument("reader");
        if (o.m_eState == State::Behind) return false;
        Move(o, [&] { o.m_eState = o.m_oReader->Next() ? State::At : State::Behind; });
        return o.m_eState == State::At;
    });
}

vok_tree_status vok_tree_reader_record(const vok_tree_reader* reader, vok_tree_record* record) {
    return AtRecord(__func__, reader, [&](const vok_tree_reader& o) {
        const Data_Record& r = **o.m_oReader;
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
    return AtRecord(__func__, reader, [&](const vok_tree_reader& o) {
        const Arr<Data_Record::Attribute>& oAttributes = (*o.m_oReader)->GetAttributes();
        vok_tree_record_attribute& oAttribute = Out(attribute, "attribute");
        if (nth >= oAttributes.Size()) return VOK_TREE_NONE;
        const Data_Record::Attribute& a = oAttributes(nth);
        oAttribute = {a.sName.data(), a.sName.size(), a.sValue.data(), a.sValue.size()};
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_path(const vok_tree_reader* reader, char* buffer, size_t room,
                                     size_t* length) {
    return AtRecord(__func__, reader, [&](const vok_tree_reader& o) {
        return CopyOut(o.m_oReader->GetPath().View(), buffer, room, length);
    });
}

vok_tree_status vok_tree_reader_skip(vok_tree_reader* reader) {
    return AtRecord(__func__, reader, [](vok_tree_reader& o) {
        o.m_oReader->SkipSuccessors();
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_take(vok_tree_reader* reader, vok_tree_node* node) {
    return AtRecord(__func__, reader, [&](vok_tree_reader& o) {
        Data& oNode = Use(node);
        Move(o, [&] { o.m_oReader->Take(oNode); });
        return VOK_TREE_OK;
    });
}

vok_tree_status vok_tree_reader_report(const vok_tree_reader* reader, vok_tree_report* report) {
    return Ask(__func__, report, "report",
               [&] { return c::ToC(Use(reader, "reader").m_oReader->GetReport()); });
}

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
        if (oReader.m_eState != State::At) c::RaiseArgument("reader");
        o.Add(**oReader.m_oReader);
    });
}

vok_tree_status vok_tree_writer_announce(vok_tree_writer* writer, const char* path) {
    return Write(__func__, writer, [&](Data_Writer& o) { o.AnnounceTarget(Text(path)); });
}

vok_tree_status vok_tree_writer_finish(vok_tree_writer* writer) {
    const vok_tree_status iStatus = Write(__func__, writer, [](Data_Writer& o) { o.Finish(); });
    if (iStatus != VOK_TREE_OK) return iStatus;
    return Call(__func__, [&] {
        writer->m_oWriter.reset();
        writer->m_oOutput->Close();
    });
}
