# panelkit_add_plugin(NAME SOURCES...): builds a panelkit plugin library "<NAME>-panelkit-plugin.so".
# The library is resolved against the panelkit program when panelkit loads it, so it links
# nothing of panelkit itself: it only needs panelkit's headers (PANELKIT_INCLUDE_DIRS).
function(panelkit_add_plugin name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES PREFIX "" OUTPUT_NAME "${name}-panelkit-plugin"
    CXX_VISIBILITY_PRESET default)
  target_include_directories(${name} PRIVATE ${PANELKIT_INCLUDE_DIRS})
  target_compile_features(${name} PRIVATE cxx_std_17)
endfunction()
