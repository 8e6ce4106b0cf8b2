// SPDX-License-Identifier: MIT
// vok hash: what tells trees apart, whatever form they are in.
#include <cstdio>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include <gcrypt.h>
#include <rapidjson/writer.h>

#include "tools/commands.h"
#include "tools/document.h"
#include "tools/each_file.h"
#include "tools/input.h"
#include "tools/json_nodes.h"
#include "tools/print.h"
#include "tools/say.h"
#include "tools/shell_path.h"
#include "tools/survey.h"
#include "tools/text.h"
#include "vok/data/succ_it.h"
#include "vok/records/canonical.h"

namespace tools {

namespace {

// What a hash is made with.
class Hasher {
  public:
    Hasher() = default;
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;
    virtual ~Hasher() = default;
    virtual void Add(std::string_view sPiece) = 0;
    [[nodiscard]] virtual std::string Hex() const = 0;
};

class Xxh3 final : public Hasher {
  public:
    void Add(std::string_view sPiece) override { m_oHasher.Add(sPiece); }
    [[nodiscard]] std::string Hex() const override { return m_oHasher.Get().ToHex().CStr(); }

  private:
    vok::Data_Hasher m_oHasher;
};

class Sha256 final : public Hasher {
  public:
    Sha256() {
        gcry_check_version(nullptr);
        // Nothing here is secret.
        gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
        gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
        if (gcry_md_open(&m_pState, GCRY_MD_SHA256, 0) != 0) {
            throw std::runtime_error(Say("SHA-256 is not to be had"));
        }
    }
    ~Sha256() override { gcry_md_close(m_pState); }
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    void Add(std::string_view sPiece) override {
        gcry_md_write(m_pState, sPiece.data(), sPiece.size());
    }
    [[nodiscard]] std::string Hex() const override {
        const unsigned char* p = gcry_md_read(m_pState, GCRY_MD_SHA256);
        std::string s;
        for (unsigned u = 0; u < gcry_md_get_algo_dlen(GCRY_MD_SHA256); ++u) {
            char sByte[3];
            std::snprintf(sByte, sizeof(sByte), "%02x", p[u]);
            s += sByte;
        }
        return s;
    }

  private:
    gcry_md_hd_t m_pState = nullptr;
};

std::unique_ptr<Hasher> MakeHasher(const HashOptions& o) {
    if (o.bSha256) return std::make_unique<Sha256>();
    return std::make_unique<Xxh3>();
}

// A hash, of a node unless sPath is empty.
void PrintHash(const HashOptions& o, const std::string& sFile, const std::string& sPath,
               const std::string& sHex) {
    if (!o.bJson) {
        Print(sHex + "  " + Visible(sFile) + (sPath.empty() ? "" : ' ' + sPath) + '\n');
        return;
    }
    JsonPrinter oStream;
    rapidjson::Writer<JsonPrinter> oOut(oStream);
    oOut.StartObject();
    oOut.Key("file");
    WriteText(oOut, sFile);
    oOut.Key("path");
    WriteText(oOut, sPath.empty() ? "/" : sPath);
    oOut.Key("hash");
    WriteText(oOut, sHex);
    oOut.EndObject();
    oStream.Put('\n');
    oStream.Flush();
}

// A file that is not whole has no hash.
int Tell(const HashOptions& o, const std::string& sFile, const std::string& sFault,
         const std::function<std::string()>& oHex) {
    if (!sFault.empty()) {
        Complain(sFile, sFault);
        return EXIT_NEGATIVE;
    }
    PrintHash(o, sFile, {}, oHex());
    return EXIT_GOOD;
}

int ByRecords(const HashOptions& o, const std::string& sFile) {
    if (o.sPath != "/") throw NeedsTree();
    const auto pHasher = MakeHasher(o);
    vok::Data_Canonical oForm([&](std::string_view sPiece) { pHasher->Add(sPiece); });
    Document oDocument(sFile);
    while (oDocument.Next()) {
        if (!oForm.Add(oDocument.Reader())) throw NeedsTree();
    }
    oForm.Finish();
    return Tell(o, sFile, FaultOf(oDocument.Report(), oDocument.Behind()),
                [&] { return pHasher->Hex(); });
}

int ByTree(const HashOptions& o, const std::string& sFile) {
    const Input oIn = Load(sFile);
    const std::string sFault = FaultOf(oIn.oReport, oIn.sBehind);
    if (!sFault.empty()) return Tell(o, sFile, sFault, nullptr);
    const vok::Data_NodeSet oFound = oIn.Find(o.sPath);
    for (std::size_t u = 0; u < oFound.Size(); ++u) {
        const vok::Data oNode = oFound.GetNth(u);
        const auto pHasher = MakeHasher(o);
        oNode.Canonical([&](std::string_view sPiece) { pHasher->Add(sPiece); });
        const bool bTop = o.sPath == "/";
        PrintHash(o, sFile, bTop ? "" : ShownPath(oNode.GetPath().View()), pHasher->Hex());
    }
    return oFound.Size() != 0 ? EXIT_GOOD : EXIT_NEGATIVE;
}

}  // namespace

int Hash(const HashOptions& o) {
    // What makes it ready is not for several threads.
    if (o.bSha256) (void)Sha256();
    return ForEachFile(o.asFile, o.uAtOnce, [&](const std::string& sFile) {
        try {
            return Answer(
                sFile, [&] { return ByRecords(o, sFile); }, [&] { return ByTree(o, sFile); });
        } catch (const InputError& oError) {
            return TellFault(oError);
        }
    });
}

}  // namespace tools
