# Compile settings of the project's own targets, set per target so that a parent
# project that adds ZetFormulaLib with add_subdirectory or FetchContent keeps its own.
#
#   zet_target_flags(TARGET [EXACT_FP])
#
# - Warnings: -Wall -Wextra with gcc and clang (/W4 with MSVC), errors with ZET_WERROR.
# - EXACT_FP: no fused multiply-add unless the code asks for one. The vector kernels are
#   compiled for instruction sets with FMA and must round exactly as their scalar
#   definitions; the numeric code of the plug-in and the platform is held to the same
#   rule, so that a processor whose baseline has FMA (arm64) gives the same numbers.
#   MSVC does not contract under its default /fp:precise.
function(zet_target_flags target)
  cmake_parse_arguments(ARG "EXACT_FP" "" "" ${ARGN})
  set(gnu "$<OR:$<CXX_COMPILER_ID:GNU>,$<CXX_COMPILER_ID:Clang>,$<CXX_COMPILER_ID:AppleClang>>")
  target_compile_options(${target} PRIVATE
    $<${gnu}:-Wall -Wextra>
    $<$<CXX_COMPILER_ID:MSVC>:/W4>)
  if(ZET_WERROR)
    target_compile_options(${target} PRIVATE $<${gnu}:-Werror> $<$<CXX_COMPILER_ID:MSVC>:/WX>)
  endif()
  if(ARG_EXACT_FP)
    target_compile_options(${target} PRIVATE $<${gnu}:-ffp-contract=off>)
  endif()
endfunction()
