#define KALDRA_KERNELS batchKernelsAvx512
#include "element/batch_kernels_body.h"
