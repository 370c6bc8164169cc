#include "post/vtu_export.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string_view>
#include <type_traits>
#include <vector>

#include "element/element_geometry.h"
#include "model/file_names.h"
#include "model/problem_model.h"
#include "platform/memory.h"
#include "platform/number_text.h"
#include "post/output_file.h"

namespace kaldra {

namespace {

constexpr std::string_view byteOrder = std::endian::native == std::endian::little ? "LittleEndian" : "BigEndian";

// RFC 4648, with padding.
void AppendBase64(std::string& text, std::string_view bytes) {
    constexpr std::string_view letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    for (std::size_t i = 0; i < bytes.size(); i += 3) {
        const std::size_t held = std::min<std::size_t>(3, bytes.size() - i);
        std::uint32_t bits = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            bits = bits << 8 | (k < held ? static_cast<unsigned char>(bytes[i + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= held ? letters[bits >> (18 - 6 * k) & 63] : '=';
        }
    }
}

template <class Number>
constexpr std::string_view TypeName() {
    if constexpr (std::is_same_v<Number, float>) return "Float32";
    if constexpr (std::is_same_v<Number, std::int32_t>) return "Int32";
    if constexpr (std::is_same_v<Number, std::int64_t>) return "Int64";
    return "UInt8";
}

// The count of bytes and the bytes are one base64 text.
template <class Number>
void PutArray(OutputFile& file, std::string_view name, const std::vector<Number>& values, int components = 1) {
    std::string text = FormatText("        <DataArray type=\"%s\" Name=\"%s\"", TypeName<Number>(), name);
    if (components > 1) text += FormatText(" NumberOfComponents=\"%d\"", components);
    text += " format=\"binary\">\n";
    const std::uint64_t length = values.size() * sizeof(Number);
    std::string bytes(sizeof length + length, '\0');
    std::memcpy(bytes.data(), &length, sizeof length);
    if (length > 0) std::memcpy(bytes.data() + sizeof length, values.data(), length);
    AppendBase64(text, bytes);
    file.Put(text + "\n        </DataArray>\n");
}

std::vector<float> Coordinates() {
    std::vector<float> xyz;
    for (std::size_t n = 0; n < static_cast<std::size_t>(model.nodeCount); ++n) {
        xyz.insert(xyz.end(), {model.nodes[n].x, model.nodes[n].y, 0.0F});
    }
    return xyz;
}

void PutMesh(OutputFile& file, const MeshCells& cells) {
    std::vector<std::uint8_t> kinds;
    for (const CellKind kind : cells.kinds) kinds.push_back(static_cast<std::uint8_t>(kind));
    file.Put("      <Points>\n");
    PutArray(file, "Points", Coordinates(), 3);
    file.Put("      </Points>\n      <Cells>\n");
    PutArray(file, "connectivity", cells.nodes);
    PutArray(file, "offsets", cells.ends);
    PutArray(file, "types", kinds);
    file.Put("      </Cells>\n");
}

void PutNodes(OutputFile& file, const StepResults& results) {
    std::vector<float> temperature;
    std::vector<float> flow;
    for (const NodeResult& node : results.nodes) {
        temperature.push_back(node.temperature);
        flow.push_back(node.flow);
    }
    file.Put("      <PointData Scalars=\"Temperature\">\n");
    PutArray(file, "Temperature", temperature);
    PutArray(file, "HeatFlow", flow);
    file.Put("      </PointData>\n");
}

void PutElements(OutputFile& file, const MeshCells& cells, const StepResults& results) {
    std::vector<std::int32_t> number, material, isNull, isInfinite;
    std::vector<float> flux, conductivity, water, capacity;
    for (const std::int32_t index : cells.element) {
        const ElementRec& element = model.elements[static_cast<std::size_t>(index)];
        const ElementMeans means = MeansOf(results, static_cast<std::size_t>(index));
        number.push_back(index + 1);
        material.push_back(element.material);
        isNull.push_back(IsNullElement(element) ? 1 : 0);
        isInfinite.push_back(IsInfinite(element) ? 1 : 0);
        flux.insert(flux.end(), {means.fluxX, means.fluxY, 0.0F});
        conductivity.push_back(means.conductivity);
        water.push_back(means.unfrozenWater);
        capacity.push_back(means.heatCapacity);
    }
    file.Put("      <CellData>\n");
    PutArray(file, "Element", number);
    PutArray(file, "Material", material);
    PutArray(file, "Null", isNull);
    PutArray(file, "Infinite", isInfinite);
    PutArray(file, "Flux", flux, 3);
    PutArray(file, "Conductivity", conductivity);
    PutArray(file, "UnfrozenWater", water);
    PutArray(file, "HeatCapacity", capacity);
    file.Put("      </CellData>\n");
}

std::string Opening(std::string_view type) {
    return FormatText(
        "<?xml version=\"1.0\"?>\n<VTKFile type=\"%s\" version=\"1.0\" byte_order=\"%s\" header_type=\"UInt64\">\n",
        type, byteOrder);
}

std::string XmlText(std::string_view text) {
    std::string escaped;
    for (const char c : text) {
        switch (c) {
            case '&':
                escaped += "&amp;";
                break;
            case '<':
                escaped += "&lt;";
                break;
            case '"':
                escaped += "&quot;";
                break;
            default:
                escaped += c;
        }
    }
    return escaped;
}

}  // namespace

std::string VtuName(std::int32_t step) { return ReplaceExtension(model.dataFileName, FormatText(".%02d.vtu", step)); }

std::string PvdName() { return ReplaceExtension(model.dataFileName, ".pvd"); }

int WriteVtu(const MeshCells& cells, const StepResults& results) {
    OutputFile file;
    if (!file.Begin(VtuName(results.step))) return 0;
    const std::size_t bytes = 64 * (cells.kinds.size() + results.nodes.size());
    const int put = WithMemory(bytes, [&] {
        file.Put(Opening("UnstructuredGrid") + "  <UnstructuredGrid>\n");
        file.Put(FormatText("    <Piece NumberOfPoints=\"%d\" NumberOfCells=\"%d\">\n", model.nodeCount,
                            static_cast<std::int64_t>(cells.kinds.size())));
        PutNodes(file, results);
        PutElements(file, cells, results);
        PutMesh(file, cells);
        file.Put("    </Piece>\n  </UnstructuredGrid>\n</VTKFile>\n");
    });
    return put && file.Commit();
}

int WritePvd(std::span<const SavedStep> steps) {
    std::string text = Opening("Collection") + "  <Collection>\n";
    for (const SavedStep& step : steps) {
        const std::string path = VtuName(step.step);
        text += "    <DataSet timestep=\"";
        AppendNumber(text, step.elapsed);
        text += "\" part=\"0\" file=\"" + XmlText(path.substr(path.rfind('/') + 1)) + "\"/>\n";
    }
    return WriteOutput(PvdName(), text + "  </Collection>\n</VTKFile>\n");
}

}  // namespace kaldra
