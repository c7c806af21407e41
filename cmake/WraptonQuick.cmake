# What is compiled for the sake of its tests. It is built more often than it runs for long, and takes
# a third of the time without optimisation; the library keeps the flags of the build type.
option(WRAPTON_QUICK_COMPILE "Optimise nothing but the library" OFF)

add_library(wrapton_quick INTERFACE)
if(WRAPTON_QUICK_COMPILE)
  target_compile_options(wrapton_quick INTERFACE -O0 -g1)
endif()
