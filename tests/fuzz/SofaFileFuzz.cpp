// SPDX-License-Identifier: MIT
// What libmysofa might make of any file: refused with the name of a field, or converted to a set
// that the loader of set files takes. The bytes are the numbers and the sizes; and they are a file
// of which the container is checked, before libmysofa, which is not ours to test, would see it.
#include "HrtfConversion.h"
#include "HrtfSetWriter.h"
#include "fuzz/FuzzInput.h"
#include "hrtf/QuiloHrtfFile.h"
#include "text/VelkDspException.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mysofa.h>
#include <sstream>
#include <string>
#include <vector>

namespace {

void CheckAsFile(const std::uint8_t* data, std::size_t size) {
    std::string bytes("\x89HDF\r\n\x1a\n");
    bytes.append(data, data + size);
    try {
        SofaTool::CheckContainer(bytes);
    } catch (const tav::Exception&) {}
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    CheckAsFile(data, size);
    if (size < 20) return 0;
    // Sizes first, then one pool of numbers that all fields begin in.
    const auto byte = [&](std::size_t at) { return static_cast<unsigned>(data[at]); };
    std::vector<float> pool((size - 16) / 4);
    std::memcpy(pool.data(), data + 16, pool.size() * 4);
    MYSOFA_HRTF hrtf{};
    hrtf.C = 3, hrtf.I = hrtf.E = 1;
    hrtf.R = byte(0) % 8 == 0 ? byte(1) % 4 : 2;
    hrtf.M = byte(2) % 5;
    hrtf.N = byte(3) % 65;
    std::string type = byte(4) % 2 == 0 ? "spherical" : "cartesian";
    std::string kind = byte(4) % 16 == 15 ? "FreeFieldDirectivityTF" : "SimpleFreeFieldHRIR";
    const char* const texts[] = {"Type", "SOFAConventions", "Conventions",
                                 "SOFA", "DataType",        "FIR"};
    const auto text = [&](std::size_t i) { return const_cast<char*>(texts[i]); };
    MYSOFA_ATTRIBUTE typeOf{nullptr, text(0), type.data()};
    MYSOFA_ATTRIBUTE last{nullptr, text(4), text(5)};
    MYSOFA_ATTRIBUTE middle{&last, text(2), text(3)};
    MYSOFA_ATTRIBUTE first{&middle, text(1), kind.data()};
    hrtf.attributes = &first;
    const auto fill = [&](MYSOFA_ARRAY& array, std::size_t count, std::size_t at) {
        if (byte(at) % 16 == 15) count = byte(at + 1);
        const std::size_t offset = pool.empty() ? 0 : byte(at + 1) % pool.size();
        array.elements = static_cast<unsigned>(std::min(count, pool.size() - offset));
        array.values = array.elements > 0 ? pool.data() + offset : nullptr;
        array.attributes = &typeOf;
    };
    fill(hrtf.DataIR, std::size_t{2} * hrtf.M * hrtf.N, 5);
    fill(hrtf.SourcePosition, std::size_t{3} * hrtf.M, 7);
    fill(hrtf.ReceiverPosition, 6, 9);
    fill(hrtf.DataDelay, 2, 11);
    fill(hrtf.DataSamplingRate, 1, 13);
    float rate = 44100.f;
    if (byte(15) % 4 != 0) hrtf.DataSamplingRate = {&rate, 1, nullptr};
    try {
        SofaTool::ConversionOptions options;
        options.numCells = byte(15) % 32 == 1 ? 2 : 0;
        const auto set = SofaTool::Convert(SofaTool::SetOf(hrtf), options);
        std::istringstream file(SofaTool::HrtfBytes(set, {}));
        if (Quilo::ReadHrtfStream(file, "a.hrtf").points.size() != set.points.size()) std::abort();
    } catch (const tav::Exception&) {}
    return 0;
}
