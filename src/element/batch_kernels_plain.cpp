#define KALDRA_KERNELS batchKernelsPlain
#include "element/batch_kernels_body.h"
