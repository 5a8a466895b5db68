# The helper driver's images. Both come from one build, so that their compilers are called by name and not by CMake's own
# rules. A changed source, header or flag builds them anew.
set(driver_folder ${PROJECT_SOURCE_DIR}/driver)
file(GLOB driver_core CONFIGURE_DEPENDS ${driver_folder}/*.cpp)
file(GLOB driver_headers CONFIGURE_DEPENDS ${driver_folder}/*.h)
list(REMOVE_ITEM driver_core ${driver_folder}/HardwareKernel.cpp)

# driver_image(FILE BITS SOURCE... [FLAGS FLAG...] [IMPORTS NAME...])
# Makes ${CMAKE_CURRENT_BINARY_DIR}/FILE for 32-bit or 64-bit Windows, signed if anything is, its symbols beside it, and its
# target image-FILE. An image that does not pass driver/check-image is not made.
# SOURCEs are what stands behind driver/Hardware.h and what else the image has; FLAGS are for the compiler, and IMPORTS may
# be imported beyond what the check knows.
function(driver_image driver_file bits)
  cmake_parse_arguments(PARSE_ARGV 2 extra "" "" "FLAGS;IMPORTS")
  set(hardware ${extra_UNPARSED_ARGUMENTS})
  cmake_path(REPLACE_EXTENSION driver_file LAST_ONLY pdb OUTPUT_VARIABLE symbols_file)
  if(bits EQUAL 32)
    set(host i686-w64-mingw32)
    # Nothing saves the floating-point and vector registers for a 32-bit driver, and nothing reads its tables of frames.
    set(machine -mgeneral-regs-only -fno-asynchronous-unwind-tables)
    set(link -Wl,-e,_DriverEntry@8 -Wl,--major-os-version=5,--minor-os-version=1
             -Wl,--major-subsystem-version=5,--minor-subsystem-version=1)
  else()
    set(host x86_64-w64-mingw32)
    set(machine)
    set(link -Wl,-e,DriverEntry -Wl,--major-os-version=5,--minor-os-version=2
             -Wl,--major-subsystem-version=5,--minor-subsystem-version=2)
  endif()
  set(ddk_places /usr/${host}/include/ddk /usr/share/mingw-w64/include/ddk)
  find_path(QUARRINET_DDK_${bits} ntddk.h PATHS ${ddk_places} NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)

  # The folder's name is the target's, for several images may have parts of one name.
  set(parts ${CMAKE_CURRENT_BINARY_DIR}/${driver_file}.parts)
  file(MAKE_DIRECTORY ${parts})
  configure_file(${driver_folder}/RyxLib.rc.in ${parts}/version.rc @ONLY)
  set(image ${CMAKE_CURRENT_BINARY_DIR}/${driver_file})
  set(sign_image)
  if(signed)
    set(sign_image COMMAND ${sign} ${parts}/${driver_file})
  endif()
  add_custom_command(
    OUTPUT ${image}
    BYPRODUCTS ${CMAKE_CURRENT_BINARY_DIR}/${symbols_file}
    COMMAND ${host}-windres --input-format=rc --output-format=coff ${parts}/version.rc ${parts}/version.o
    COMMAND
      ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${source_date}
      ${host}-g++ -std=c++20 -O2 -Wall -Wextra -Wpedantic -Wshadow -Werror -Wframe-larger-than=512
      -ffreestanding -fno-exceptions -fno-rtti -fno-threadsafe-statics -fno-stack-protector
      -fno-tree-loop-distribute-patterns ${machine} ${extra_FLAGS} -DRYX_VERSION_MAJOR=${PROJECT_VERSION_MAJOR}
      -DRYX_VERSION_MINOR=${PROJECT_VERSION_MINOR} -I${PROJECT_SOURCE_DIR} -isystem ${QUARRINET_DDK_${bits}}
      ${driver_core} ${hardware} ${parts}/version.o -o ${parts}/${driver_file} -nostdlib -s -Wl,--subsystem,native ${link}
      -Wl,--exclude-all-symbols,--dynamicbase,--nxcompat,--insert-timestamp,--fatal-warnings
      -Wl,--major-image-version=${PROJECT_VERSION_MAJOR},--minor-image-version=${PROJECT_VERSION_MINOR}
      -Wl,--pdb=${parts}/${symbols_file} -lntoskrnl -lhal
    ${sign_image}
    COMMAND bash ${driver_folder}/check-image ${parts}/${driver_file} ${bits} ${PROJECT_VERSION} ${source_date}
            ${extra_IMPORTS}
    COMMAND ${CMAKE_COMMAND} -E copy ${parts}/${driver_file} ${parts}/${symbols_file} ${CMAKE_CURRENT_BINARY_DIR}
    DEPENDS ${driver_core} ${driver_headers} ${hardware} ${parts}/version.rc ${driver_folder}/check-image
    COMMENT "The ${bits}-bit driver image ${driver_file}"
    COMMAND_EXPAND_LISTS VERBATIM)
  add_custom_target(image-${driver_file} DEPENDS ${image})
endfunction()
