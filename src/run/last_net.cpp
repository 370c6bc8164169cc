#include "run/last_net.h"

#include "model/line_reader.h"
#include "platform/files.h"
#include "platform/memory.h"
#include "results/text_writer.h"

namespace kaldra {

int AbandonForMemory() {
    File none;
    ReadLine(none, clearbuf);
    DropBufferedLines();
    return ShowOutOfMemory();
}

}  // namespace kaldra
