// SPDX-License-Identifier: MIT
#include "libquilo/hrtf/HrtfFiles.h"

#include <sstream>

namespace Quilo {

using Sdif::ElementType;

std::string HrtfFileContent::Bytes() const {
    std::ostringstream stream;
    Sdif::Writer writer(stream);
    writer.WriteNameValues({infos.begin(), infos.end()});
    for (const HrtfFrame& frame : frames) {
        writer.WriteFrame(frame.signature, 0.0, frame.stream, frame.matrices);
    }
    return stream.str();
}

HrtfFileContent SmallCellSet() {
    const auto cells = [](double gain) {
        return Sdif::Matrix{"XIIR",
                            ElementType::Float64,
                            2,
                            9,
                            {gain, 0.5, 0.25, -0.5, 0.125, 0.0, 0.5, 0.25, -0.125,  //
                             -gain, 1.5, 0.0, 0.0, 0.5, 0.25, 0.0, -1.0, 0.5}};
    };
    return {{{"DataType", "Binaural"},
             {"FiltersType", "BiquadCells"},
             {"FiltersLength", "9"},
             {"NumChannels", "2"},
             {"NumPoints", "2"},
             {"SamplingRate", "44100"}},
            {{1,
              {{"XCAR", ElementType::Float32, 1, 3, {0, 1, 0}},
               {"XITD", ElementType::Float32, 1, 1, {0}},
               cells(1.0)}},
             {2,
              {{"XAED", ElementType::Float64, 1, 3, {90, 60, 2}},
               {"XITD", ElementType::Float32, 1, 1, {0.5}},
               cells(2.0)}}}};
}

HrtfFileContent SmallFirSet() {
    HrtfFileContent set = SmallCellSet();
    set.infos["FiltersType"] = "FIR";
    set.infos["FiltersLength"] = "3";
    for (HrtfFrame& frame : set.frames) {
        frame.matrices.resize(1);
        frame.matrices.push_back({"XFIR", ElementType::Int16, 2, 3, {1, 2, 3, 4, 5, 6}});
    }
    return set;
}

}  // namespace Quilo
