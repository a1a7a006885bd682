// Open CASCADE turns signals into exceptions only where this is defined, as its own build does.
#if !defined(_WIN32) && !defined(OCC_CONVERT_SIGNALS)
#define OCC_CONVERT_SIGNALS
#endif

#include "qrnimport/ModelReader.h"
#include "qrnimport/StepFile.h"

#include "qrnimport/MeshNormals.h"
#include "qrnimport/ProgressBridge.h"
#include "qrnimport/XcafImporter.h"
#include "qrnplatform/File.h"
#include "qrnplatform/Text.h"

#include <BRepTools.hxx>
#include <BRep_Builder.hxx>
#include <IGESCAFControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_Printer.hxx>
#include <Message_ProgressScope.hxx>
#include <OSD.hxx>
#include <Poly_Triangulation.hxx>
#include <RWGltf_CafReader.hxx>
#include <RWObj_CafReader.hxx>
#include <RWStl.hxx>
#include <STEPCAFControl_Reader.hxx>
#include <STEPControl_Reader.hxx>
#include <Standard_ErrorHandler.hxx>
#include <Standard_Failure.hxx>
#include <TColStd_SequenceOfAsciiString.hxx>
#include <TDataStd_Name.hxx>
#include <TDocStd_Document.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Shape.hxx>
#include <XCAFApp_Application.hxx>
#include <XCAFDoc_DocumentTool.hxx>
#include <XCAFDoc_ShapeTool.hxx>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <mutex>
#include <set>
#include <thread>

#ifndef _WIN32
#include <csignal>
#endif

namespace qrnimport {

namespace {

enum class Kind { STEP, IGES, BREP, GLTF, OBJ, STL, UNKNOWN };

Kind kindOf(const std::string& path, std::string& extension) {
    const auto slash = path.find_last_of("/\\");
    const auto dot = path.find_last_of('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) {
        extension.clear();
        return Kind::UNKNOWN;
    }
    extension = path.substr(dot);
    std::string e = extension;
    std::transform(e.begin(), e.end(), e.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    if (e == ".step" || e == ".stp")
        return Kind::STEP;
    if (e == ".iges" || e == ".igs")
        return Kind::IGES;
    if (e == ".brep" || e == ".brp")
        return Kind::BREP;
    if (e == ".gltf" || e == ".glb")
        return Kind::GLTF;
    if (e == ".obj")
        return Kind::OBJ;
    if (e == ".stl")
        return Kind::STL;
    return Kind::UNKNOWN;
}

std::string fileStem(const std::string& path) {
    const auto slash = path.find_last_of("/\\");
    std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const auto dot = name.find_last_of('.');
    return dot == std::string::npos || dot == 0 ? name : name.substr(0, dot);
}

// The first and last bytes of a file, to tell its kind before a reader sees it.
struct Sample {
    std::string head, tail;
    long size = 0;
};

bool sample(const std::string& path, Sample& out, std::string& error) {
    std::FILE* f = qrnplatform::File::open(qrnplatform::Text::fromUtf8(path), "rb");
    if (!f) {
        error = "cannot open " + path + ": it cannot be read (" + std::strerror(errno) + ")";
        return false;
    }
    char buffer[4096];
    const std::size_t n = std::fread(buffer, 1, sizeof buffer, f);
    out.head.assign(buffer, n);
    if (std::fseek(f, 0, SEEK_END) == 0)
        out.size = std::ftell(f);
    if (out.size > static_cast<long>(sizeof buffer) &&
        std::fseek(f, out.size - static_cast<long>(sizeof buffer), SEEK_SET) == 0) {
        const std::size_t m = std::fread(buffer, 1, sizeof buffer, f);
        out.tail.assign(buffer, m);
    } else {
        out.tail = out.head;
    }
    std::fclose(f);
    return true;
}

// A quick look at the content, so that a file of another kind gets a clear message.
bool checkContent(Kind kind, const std::string& path, const Sample& s, std::string& error) {
    if (s.size <= 0) {
        error = path + " is empty";
        return false;
    }
    switch (kind) {
    case Kind::STEP:
        if (s.head.find("ISO-10303-21") == std::string::npos) {
            error = path + " is not a STEP file (no ISO-10303-21 header)";
            return false;
        }
        if (s.tail.find("END-ISO-10303-21") == std::string::npos) {
            error = path + " is truncated: its STEP data does not end with END-ISO-10303-21";
            return false;
        }
        return true;
    case Kind::IGES: {
        // Fixed 80-column records; the first is in the start section, marked in column 73.
        const auto eol = s.head.find_first_of("\r\n");
        const std::string first = s.head.substr(0, eol);
        if (first.size() < 73 || std::string("SFBC").find(first[72]) == std::string::npos) {
            error = path + " is not an IGES file (no start section)";
            return false;
        }
        return true;
    }
    case Kind::GLTF: {
        const auto start = s.head.find_first_not_of(" \t\r\n\xEF\xBB\xBF");
        if (s.head.compare(0, 4, "glTF") != 0 &&
            (start == std::string::npos || s.head[start] != '{')) {
            error = path + " is not a glTF file";
            return false;
        }
        return true;
    }
    case Kind::BREP:
        // Checked here because Open CASCADE's reader complains about other files on stdout.
        if (s.head.find("CASCADE Topology") == std::string::npos) {
            error = path + " is not a BREP file";
            return false;
        }
        return true;
    default:
        return true;
    }
}

// Open CASCADE's messages: never to the terminal; warnings and failures go to the status
// manager.
class StatusPrinter : public Message_Printer {
public:
    StatusPrinter(qrn::IStatusManager* status, std::string path)
        : m_status(status), m_path(std::move(path)), m_thread(std::this_thread::get_id()) {}

protected:
    void send(const TCollection_AsciiString& text, const Message_Gravity gravity) const override {
        if (!m_status || gravity < Message_Warning || std::this_thread::get_id() != m_thread)
            return;
        std::lock_guard<std::mutex> lock(m_mutex);
        if (m_seen.size() >= 10 || !m_seen.insert(text.ToCString()).second)
            return; // a broken file can repeat the same complaint thousands of times
        m_status->setStatus(qrnplatform::Text::fromUtf8(m_path + ": " + text.ToCString()));
    }

private:
    qrn::IStatusManager* m_status;
    std::string m_path;
    std::thread::id m_thread;
    mutable std::mutex m_mutex;
    mutable std::set<std::string> m_seen;
};

class MessengerGuard {
public:
    MessengerGuard(qrn::IStatusManager* status, const std::string& path)
        : m_messenger(Message::DefaultMessenger()) {
        m_saved = m_messenger->Printers();
        m_messenger->ChangePrinters().Clear();
        m_messenger->AddPrinter(new StatusPrinter(status, path));
    }
    ~MessengerGuard() { m_messenger->ChangePrinters() = m_saved; }
    MessengerGuard(const MessengerGuard&) = delete;
    MessengerGuard& operator=(const MessengerGuard&) = delete;

private:
    Handle(Message_Messenger) m_messenger;
    Message_SequenceOfPrinters m_saved;
};

// Open CASCADE's signal handlers, for the time of a read only: what the process had before
// comes back afterwards.
class SignalGuard {
public:
    SignalGuard() {
#ifndef _WIN32
        for (std::size_t i = 0; i < count; ++i)
            sigaction(signals[i], nullptr, &m_saved[i]);
#endif
        OSD::SetSignal(OSD_SignalMode_Set, Standard_False);
    }
    ~SignalGuard() {
#ifndef _WIN32
        for (std::size_t i = 0; i < count; ++i)
            sigaction(signals[i], &m_saved[i], nullptr);
#endif
    }
    SignalGuard(const SignalGuard&) = delete;
    SignalGuard& operator=(const SignalGuard&) = delete;

private:
#ifndef _WIN32
    static constexpr std::size_t count = 9;
    static constexpr int signals[count] = {SIGSEGV, SIGBUS, SIGFPE,  SIGILL, SIGSYS,
                                           SIGHUP,  SIGINT, SIGQUIT, SIGTERM};
    struct sigaction m_saved[count] = {};
#endif
};

class DocumentGuard {
public:
    DocumentGuard() : m_app(XCAFApp_Application::GetApplication()) { open(); }
    ~DocumentGuard() { close(); }
    // An empty document in place of one a failed transfer left half filled.
    void renew() {
        close();
        open();
    }
    DocumentGuard(const DocumentGuard&) = delete;
    DocumentGuard& operator=(const DocumentGuard&) = delete;

    Handle(TDocStd_Document) doc;

private:
    void open() {
        doc.Nullify();
        m_app->NewDocument("MDTV-XCAF", doc);
        // Everything comes in in millimetres.
        XCAFDoc_DocumentTool::SetLengthUnit(doc, 0.001);
    }
    void close() {
        try {
            if (!doc.IsNull() && doc->IsOpened())
                m_app->Close(doc);
        } catch (const Standard_Failure&) {
        }
    }

    Handle(XCAFApp_Application) m_app;
};

void nameLabel(const TDF_Label& label, const std::string& name) {
    if (!label.IsNull() && !name.empty())
        TDataStd_Name::Set(label, TCollection_ExtendedString(name.c_str(), Standard_True));
}

std::string describe(const Standard_Failure& e) {
    const char* message = e.GetMessageString();
    return std::string(e.DynamicType()->Name()) +
           (message && *message ? std::string(": ") + message : std::string());
}

// Reads a file with an XCAF reader (STEP or IGES), ready for its transfer.
template <class Reader>
bool readXcafFile(Reader& reader, const std::string& kind, const std::string& path,
                  qrn::IStatusManager* status, std::string& error) {
    if (status)
        status->setProgress(L"reading", 0);
    if (reader.ReadFile(path.c_str()) != IFSelect_RetDone) {
        error = "cannot read " + path + ": the " + kind + " reader failed (the file is damaged " +
                "or not " + kind + ")";
        return false;
    }
    if (reader.NbRootsForTransfer() < 1) {
        error = path + " contains no geometry the viewer can show";
        return false;
    }
    return true;
}

template <class Reader>
bool transferXcaf(Reader& reader, const std::string& kind, const std::string& path,
                  const Handle(TDocStd_Document) & doc, qrn::IStatusManager* status,
                  ProgressBridge::Deadline deadline, std::string& error) {
    Handle(ProgressBridge) progress = new ProgressBridge(status, L"reading", 30, 100, deadline);
    Handle(TDocStd_Document) target = doc;
    if (!reader.Transfer(target, progress->Start())) {
        error = "cannot read " + path + ": the " + kind + " reader could not transfer its content";
        return false;
    }
    return true;
}

void setStepModes(STEPCAFControl_Reader& reader, bool pmi) {
    reader.SetColorMode(true);
    reader.SetNameMode(true);
    reader.SetLayerMode(true);
    reader.SetPropsMode(true);
    reader.SetMatMode(true);
    reader.SetGDTMode(pmi);
    reader.SetViewMode(pmi);
}

// PMI that the reader throws, crashes or fails on costs the PMI, not the model: the file is
// read again without PMI and saved views.
bool readStep(const std::string& path, DocumentGuard& document, const ModelReader::Options& options,
              qrn::IStatusManager* status, ProgressBridge::Deadline deadline, std::string& error,
              std::wstring& fileUnit, XcafImporter::StepSource& source) {
    std::string failure;
    if (!StepFile::numbersInRange(path, failure)) {
        error = "cannot read " + path + ": " + failure + " (the file is damaged)";
        return false;
    }
    {
        STEPCAFControl_Reader reader;
        setStepModes(reader, options.pmi);
        if (!readXcafFile(reader, "STEP", path, status, error))
            return false;
        fileUnit = StepFile::lengthUnit(reader.ChangeReader());
        if (!options.pmi) {
            if (!transferXcaf(reader, "STEP", path, document.doc, status, deadline, error))
                return false;
            StepFile::readLeftOut(reader.ChangeReader(), path, false, false, source);
            return true;
        }
        try {
            OCC_CATCH_SIGNALS
            if ((!options.pmiTransferHook || options.pmiTransferHook()) &&
                transferXcaf(reader, "STEP", path, document.doc, status, deadline, error)) {
                StepFile::readLeftOut(reader.ChangeReader(), path, true, options.presentation,
                                      source);
                return true;
            }
            // Stopped at the time limit: no second read.
            if (ProgressBridge::passed(deadline))
                return false;
            failure = "its transfer failed";
            error.clear();
        } catch (const Standard_Failure& e) {
            failure = describe(e);
        } catch (const std::exception& e) {
            failure = e.what();
        } catch (...) {
            failure = "an unknown exception";
        }
    }
    document.renew();
    STEPCAFControl_Reader reader;
    setStepModes(reader, false);
    // Caught here too: a signal jumps to the nearest catch, and one further out would skip
    // this function's own clean-up.
    try {
        OCC_CATCH_SIGNALS
        if (!readXcafFile(reader, "STEP", path, status, error) ||
            !transferXcaf(reader, "STEP", path, document.doc, status, deadline, error))
            return false;
    } catch (const Standard_Failure& e) {
        error = "cannot read " + path + ": the reader failed (" + describe(e) + ")";
        return false;
    }
    // PMI the reader failed on is left out in the file's drawing as well.
    StepFile::readLeftOut(reader.ChangeReader(), path, false, false, source);
    // Said only now: a reader that fails without PMI as well failed on something else.
    if (status)
        status->setStatus(qrnplatform::Text::fromUtf8(
            path + ": PMI and saved views left out: the STEP reader failed on them (" + failure +
            ")"));
    return true;
}

bool readIges(const std::string& path, const Handle(TDocStd_Document) & doc,
              qrn::IStatusManager* status, ProgressBridge::Deadline deadline, std::string& error) {
    IGESCAFControl_Reader reader;
    reader.SetColorMode(true);
    reader.SetNameMode(true);
    reader.SetLayerMode(true);
    return readXcafFile(reader, "IGES", path, status, error) &&
           transferXcaf(reader, "IGES", path, doc, status, deadline, error);
}

bool readBrep(const std::string& path, const Handle(TDocStd_Document) & doc,
              qrn::IStatusManager* status, ProgressBridge::Deadline deadline, std::string& error) {
    Handle(ProgressBridge) progress = new ProgressBridge(status, L"reading", 0, 100, deadline);
    TopoDS_Shape shape;
    BRep_Builder builder;
    if (!BRepTools::Read(shape, path.c_str(), builder, progress->Start()) || shape.IsNull()) {
        error = "cannot read " + path + ": not a BREP file, or a damaged one";
        return false;
    }
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    nameLabel(shapes->AddShape(shape, Standard_True), fileStem(path));
    return true;
}

bool readStl(const std::string& path, const Handle(TDocStd_Document) & doc,
             qrn::IStatusManager* status, ProgressBridge::Deadline deadline, std::string& error) {
    Handle(ProgressBridge) progress = new ProgressBridge(status, L"reading", 0, 100, deadline);
    Handle(Poly_Triangulation) mesh = RWStl::ReadFile(path.c_str(), progress->Start());
    if (mesh.IsNull() || mesh->NbTriangles() < 1) {
        error = "cannot read " + path + ": not an STL file, or one without triangles";
        return false;
    }
    TopoDS_Face face;
    BRep_Builder().MakeFace(face, mesh);
    Handle(XCAFDoc_ShapeTool) shapes = XCAFDoc_DocumentTool::ShapeTool(doc->Main());
    nameLabel(shapes->AddShape(face, Standard_False), fileStem(path));
    return true;
}

bool readMesh(RWMesh_CafReader& reader, const char* what, const std::string& path,
              const Handle(TDocStd_Document) & doc, qrn::IStatusManager* status,
              ProgressBridge::Deadline deadline, std::string& error) {
    reader.SetDocument(doc); // takes the document's millimetres
    Handle(ProgressBridge) progress = new ProgressBridge(status, L"reading", 0, 100, deadline);
    if (!reader.Perform(TCollection_AsciiString(path.c_str()), progress->Start())) {
        error = "cannot read " + path + ": the " + what + " reader failed";
        return false;
    }
    return true;
}

bool hasGeometry(const ModelData& model) {
    if (model.triangleCount() > 0)
        return true;
    for (const auto& node : model.nodes)
        if (node.part >= 0 &&
            model.parts[static_cast<std::size_t>(node.part)].edges.stripCount() > 0)
            return true;
    return false;
}

std::string seconds(double value) {
    char text[32];
    std::snprintf(text, sizeof text, "%g", value);
    return text;
}

std::mutex& readMutex() {
    static std::mutex m;
    return m;
}

// The part of a read where Open CASCADE may fail: signals and exceptions become messages.
bool protectedRead(Kind kind, const std::string& path, const ModelReader::Options& options,
                   ProgressBridge::Deadline deadline, ModelData& model, std::string& error,
                   qrn::IStatusManager* status) {
    bool ok = false;
    try {
        OCC_CATCH_SIGNALS
        DocumentGuard document;
        std::wstring fileUnit;
        XcafImporter::StepSource step;
        if (document.doc.IsNull()) {
            error = "cannot read " + path + ": no document could be made";
            return false;
        }
        switch (kind) {
        case Kind::STEP:
            ok = readStep(path, document, options, status, deadline, error, fileUnit, step);
            break;
        case Kind::IGES:
            ok = readIges(path, document.doc, status, deadline, error);
            break;
        case Kind::BREP:
            ok = readBrep(path, document.doc, status, deadline, error);
            break;
        case Kind::GLTF: {
            RWGltf_CafReader reader;
            reader.SetParallel(true);
            // glTF is Y-up in metres; the viewer works Z-up, as the CAD formats do.
            reader.SetSystemCoordinateSystem(RWMesh_CoordinateSystem_Zup);
            ok = readMesh(reader, "glTF", path, document.doc, status, deadline, error);
            break;
        }
        case Kind::OBJ: {
            RWObj_CafReader reader;
            ok = readMesh(reader, "OBJ", path, document.doc, status, deadline, error);
            break;
        }
        case Kind::STL:
            ok = readStl(path, document.doc, status, deadline, error);
            break;
        case Kind::UNKNOWN:
            break;
        }
        if (status)
            status->endProgress();
        if (!ok)
            return false;
        std::string importError;
        if (!XcafImporter::import(document.doc, options, model, importError, status, deadline,
                                  kind == Kind::STEP ? &step : nullptr)) {
            error = "cannot read " + path + ": " + importError;
            return false;
        }
        if (fileUnit != model.lengthUnit)
            model.fileUnit = fileUnit;
        return true;
    } catch (const Standard_Failure& e) {
        error = "cannot read " + path + ": the reader failed (" + describe(e) + ")";
    } catch (const std::exception& e) {
        error = "cannot read " + path + ": the reader failed (" + e.what() + ")";
    } catch (...) {
        error = "cannot read " + path + ": the reader failed";
    }
    if (status)
        status->endProgress();
    model = ModelData();
    return false;
}

} // namespace

bool ModelReader::read(const std::string& path, ModelData& model, std::string& error,
                       qrn::IStatusManager* status) {
    return read(path, Options(), model, error, status);
}

bool ModelReader::read(const std::string& path, const Options& options, ModelData& model,
                       std::string& error, qrn::IStatusManager* status) {
    model = ModelData();
    error.clear();
    const std::wstring widePath = qrnplatform::Text::fromUtf8(path);
    if (path.empty() || !qrnplatform::File::exists(widePath)) {
        error = "cannot open " + (path.empty() ? std::string("''") : path) + ": no such file";
        return false;
    }
    if (qrnplatform::File::isDirectory(widePath)) {
        error = "cannot open " + path + ": it is a directory";
        return false;
    }
    std::string extension;
    const Kind kind = kindOf(path, extension);
    if (kind == Kind::UNKNOWN) {
        error = "cannot read " + path + ": " +
                (extension.empty() ? std::string("no file extension")
                                   : "unknown file type '" + extension + "'") +
                " (known: .step .stp .iges .igs .brep .brp .gltf .glb .obj .stl)";
        return false;
    }
    Sample head;
    if (!sample(path, head, error) || !checkContent(kind, path, head, error))
        return false;

    // Open CASCADE's readers share global state; one read at a time. The time limit counts
    // from here.
    std::lock_guard<std::mutex> lock(readMutex());
    const ProgressBridge::Deadline deadline = ProgressBridge::deadlineAfter(options.timeLimit);
    bool ok = false;
    {
        MessengerGuard messages(status, path);
        SignalGuard signals;
        ok = protectedRead(kind, path, options, deadline, model, error, status);
    }
    // A reader that was stopped may have failed or handed back part of the file; either way
    // the user learns why, and never sees half a model.
    if (ProgressBridge::passed(deadline)) {
        ok = false;
        error = "cannot read " + path + ": stopped after the import's time limit of " +
                seconds(options.timeLimit) + " s";
    }
    if (!ok) {
        model = ModelData();
        if (error.empty())
            error = "cannot read " + path;
        return false;
    }
    if (!hasGeometry(model)) {
        model = ModelData();
        error = path + " contains no geometry the viewer can show";
        return false;
    }
    // Parts that came as triangles only (mesh formats) get the edges a drawing of them shows,
    // once, so that the edge views show them too.
    MeshNormals::addFeatureEdges(model);
    return true;
}

} // namespace qrnimport
