// Status cells, reporting functions and the message catalogue.
#define VX_MODULE_LABEL ".\\src\\vx_globals"

#include <cstdlib>

#include "vx_reporter.h"
#include "vx_report.h"

int VX_statusCode = VX_RET_TRUE;
VX_BaseReporter* VX_msgReporter = nullptr;
VX_Reporter* VX_defReporter = nullptr;
VX_NullSink VX_NULL_PTR = {};

int VX_userError = 0;

// The inline VX_setUserError is also emitted here, so the library exports it by name.
[[gnu::used]] static void (*const keepSetUserError)(int) = &VX_setUserError;

namespace {

struct CatalogueEntry {
  unsigned number;
  const char* text;
};

struct CatalogueCategory {
  int number;
  unsigned count;
  CatalogueEntry* entries;
};

CatalogueEntry generalMessages[] = {
    {0, "VX_logErrorGen() : Unknown error code"},
    {1, "Memory error"},
    {2, "Array index out of bounds"},
    {3, "Index %d not in [%d,%d]"},
    {4, "Division by zero"},
};

CatalogueEntry stringArrayMessages[] = {
    {0, "VX_logErrorStrArr() : Unknown error code"},
    {1, "VX_StringArr constructor"},
    {2, "VX_StringArr copy constructor"},
    {3, "VX_StringArr copy"},
    {4, "VX_StringArr concatenate"},
    {5, "VX_StringArr insert"},
    {6, "VX_StringArr delete"},
    {7, "VX_StringArr array reference"},
    {8, "VX_StringArr free"},
};

CatalogueEntry vectorArrayMessages[] = {
    {0, "VX_logErrorVecArr() : Unknown error code"},
    {1, "VX_VectorArr constructor"},
    {2, "VX_VectorArr copy constructor"},
    {3, "VX_VectorArr assignment"},
    {4, "VX_VectorArr assign sum"},
    {5, "VX_VectorArr assign difference"},
    {6, "VX_VectorArr add"},
    {7, "VX_VectorArr subtract"},
    {8, "Array args have different number of vertices"},
    {9, "Arg %d has %d vertices"},
    {10, "VX_VectorArr array reference"},
    {11, "VX_VectorArr divide vector by real"},
};

CatalogueEntry matrixMessages[] = {
    {0, "VX_logErrorMatrix() : Unknown error code"},
    {1, "VX_Matrix set to identity matrix"},
    {2, "Matrix not N x N"},
    {3, "Matrix is %d x %d"},
    {4, "VX_VectorArr matrix multiplication: "},
    {5, "incompatible matrices: %d x %d and %d x %d"},
    {6, "VX_Matrix row reference: "},
    {7, "VX_Matrix transpose: "},
    {8, "VX_Matrix determinant: "},
    {9, "VX_Matrix inverse: "},
    {10, "Matrix not invertible"},
};

template <class T, unsigned N>
constexpr unsigned countOf(T (&)[N]) {
  return N;
}

CatalogueCategory catalogue[] = {
    {0, countOf(generalMessages), generalMessages},
    {1, countOf(stringArrayMessages), stringArrayMessages},
    {2, countOf(vectorArrayMessages), vectorArrayMessages},
    {3, countOf(matrixMessages), matrixMessages},
};

// Three-way comparisons for qsort; a null element compares equal to anything.
int compareCategories(const void* a, const void* b) {
  if (!a || !b) return 0;
  int x = static_cast<const CatalogueCategory*>(a)->number;
  int y = static_cast<const CatalogueCategory*>(b)->number;
  return (x > y) - (x < y);
}

int compareEntries(const void* a, const void* b) {
  if (!a || !b) return 0;
  unsigned x = static_cast<const CatalogueEntry*>(a)->number;
  unsigned y = static_cast<const CatalogueEntry*>(b)->number;
  return (x > y) - (x < y);
}

}  // namespace

VX_RET_STATUS VX_getStatusCode(void) { return static_cast<VX_RET_STATUS>(VX_statusCode); }

void VX_clearStatusCode(void) { VX_statusCode = VX_RET_TRUE; }

int VX_getUserError(void) {
  VX_userError = 0;
  return 0;
}

VX_RET_STATUS VX_reportStatus(VX_RET_STATUS status, const char* file, unsigned line) {
  VX_userError = 0;
  VX_statusCode = status;
  if (!VX_msgReporter) return VX_RET_ERR_GEN;
  VX_msgReporter->reportStat(file, line, status, nullptr);
  return VX_RET_TRUE;
}

VX_RET_STATUS VX_reportErrorMsg(const char* file, unsigned line, const char* func, const char* format, ...) {
  VX_userError = 0;
  VX_statusCode = VX_RET_ERR_GEN;
  if (!VX_msgReporter) return VX_RET_ERR_GEN;
  va_list args;
  va_start(args, format);
  VX_RET_STATUS result = VX_msgReporter->error(file, line, func, format, args);
  va_end(args);
  return result;
}

VX_RET_STATUS VX_reportWarningMsg(const char* file, unsigned line, const char* func, const char* format, ...) {
  VX_userError = 0;
  if (!VX_msgReporter) return VX_RET_ERR_GEN;
  va_list args;
  va_start(args, format);
  VX_RET_STATUS result = VX_msgReporter->warning(file, line, func, format, args);
  va_end(args);
  return result;
}

VX_RET_STATUS VX_mesg(const char* title, const char* format, ...) {
  VX_userError = 0;
  if (!VX_msgReporter) return VX_RET_ERR_GEN;
  va_list args;
  va_start(args, format);
  VX_RET_STATUS result = VX_msgReporter->print(title, format, args);
  va_end(args);
  return result;
}

VX_RET_STATUS VX_registerReporter(VX_BaseReporter* reporter) {
  VX_setUserError(0);
  if (!reporter) return VX_FAIL(VX_RET_ERR_ARG);
  VX_msgReporter = reporter;
  return VX_RET_TRUE;
}

const char* VX_msg(unsigned category, unsigned number) {
  if (category >= countOf(catalogue)) return nullptr;
  const CatalogueCategory& c = catalogue[category];
  if (number >= c.count) return nullptr;
  return c.entries[number].text;
}

VX_RET_STATUS VX_msgInit(void) {
  std::qsort(catalogue, countOf(catalogue), sizeof(CatalogueCategory), compareCategories);
  for (CatalogueCategory& c : catalogue) std::qsort(c.entries, c.count, sizeof(CatalogueEntry), compareEntries);
  return VX_RET_TRUE;
}
