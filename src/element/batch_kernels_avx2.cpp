#define KALDRA_KERNELS batchKernelsAvx2
#include "element/batch_kernels_body.h"
