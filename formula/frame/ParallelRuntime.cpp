// Keeps the OpenMP runtime loaded for the life of the process.
//
// The polarization kernels spread rows over OpenMP worker threads. After a parallel
// region those threads do not end: they park inside the OpenMP runtime, waiting for
// the next region. This plug-in is the only module of a typical host that needs the
// runtime, so unloading the plug-in would unload the runtime too and unmap the code
// the parked workers sleep in; they crash the host as soon as they wake (at process
// exit at the latest).
//
// Joining the workers on unload is not something the runtime offers reliably (a pool
// belongs to each host thread that ran a region, and its threads are detached), so the
// plug-in instead marks the runtime as never to be unloaded, once, when it is loaded.
// The parked workers then stay valid whatever the host does with the plug-in, later
// loads of the plug-in reuse the same runtime and its pools, and nothing of the
// plug-in's own code is left on their stacks between regions.
#if defined(_WIN32)
#include <windows.h>
#else
#include <dlfcn.h>
#endif
#include <omp.h>

#include "frame/Registry.h"

namespace zet {

#if defined(_WIN32)
// Windows: the toolchain's OpenMP runtime, libgomp-1.dll, is pinned: the loader never
// unloads it for the rest of the process. It is named, not found from the address of
// one of its functions: in this DLL that address is the import stub inside the plug-in
// itself, and pinning it would keep the plug-in loaded, its registry emptied by TermAll.
void PinParallelRuntime() {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_PIN, "libgomp-1.dll", &module);
  (void)&omp_get_max_threads;  // the runtime this plug-in links
}
#else
void PinParallelRuntime() {
  Dl_info info{};
  // Whichever runtime the build linked (GNU libgomp, LLVM libomp): the file that
  // holds omp_get_max_threads.
  if (!dladdr(reinterpret_cast<void*>(&omp_get_max_threads), &info) || !info.dli_fname) return;
  // RTLD_NOLOAD: only promote the already loaded runtime to "never unload"; the
  // handle adds one reference that is deliberately never released.
  dlopen(info.dli_fname, RTLD_NOW | RTLD_NOLOAD | RTLD_NODELETE);
}
#endif

}  // namespace zet
