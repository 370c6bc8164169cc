#include "run/run_lock.h"

#include "model/problem_model.h"
#include "platform/files.h"
#include "run/messages.h"

namespace kaldra {

static FileLock runLock;

int HoldRunLock() { return runLock.Take(model.dataFileName) == FileLock::Result::HeldElsewhere ? ShowError(5001) : 1; }

void ReleaseRunLock() { runLock.Release(); }

}  // namespace kaldra
