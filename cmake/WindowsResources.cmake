# What a Windows program of this project carries besides its code: the two driver images, the manifest, the version.

# windows_resources(TARGET DRIVER_32 DRIVER_64)
# The resource script names every file by its full path, for the resource compiler would prefer a file of that name in
# its current folder. The object depends on all of them, so that a changed driver image comes into the program.
function(windows_resources target driver32 driver64)
  set(manifest ${PROJECT_SOURCE_DIR}/resources/Quarrinet.manifest)
  foreach(input driver32 driver64)
    get_filename_component(${input} ${${input}} ABSOLUTE BASE_DIR ${PROJECT_SOURCE_DIR})
    get_source_file_property(generated ${${input}} GENERATED)
    if(NOT generated AND NOT EXISTS ${${input}})
      message(FATAL_ERROR "The driver image ${${input}} does not exist")
    endif()
  endforeach()
  set(script ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
  configure_file(${PROJECT_SOURCE_DIR}/resources/Quarrinet.rc.in ${script} @ONLY)
  set_source_files_properties(${script} PROPERTIES OBJECT_DEPENDS "${driver32};${driver64};${manifest}")
  target_sources(${target} PRIVATE ${script})
endfunction()
