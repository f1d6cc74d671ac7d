# Packs the built program: cmake -DBIN=<bin folder> -DSTAGE=<scratch folder> -DICON=<.ico>
#   -DWXS=<tolvane.wxs> -DVERSION=<x.y.z> -DMSI=<out.msi> [-DZIP=<out.zip> -DREADME=<readme>]
#   -P make_package.cmake
# The MSI installs what the zip holds, less the read-me (the help file says it all).
cmake_minimum_required(VERSION 3.25)

foreach(var BIN STAGE ICON WXS VERSION MSI)
    if(NOT DEFINED ${var})
        message(FATAL_ERROR "make_package: ${var} is not set")
    endif()
endforeach()
find_program(WIXL wixl REQUIRED)
find_program(WIXL_HEAT wixl-heat REQUIRED)

# The program's folder, as a user has it: the exes, the help, the languages, the data and the
# administrative templates.
set(app ${STAGE}/Tolvane)
file(REMOVE_RECURSE ${STAGE})
file(MAKE_DIRECTORY ${app})
foreach(f Tolvane.exe tolvanec.exe Tolvane.chm)
    if(NOT EXISTS ${BIN}/${f})
        message(FATAL_ERROR "make_package: ${BIN}/${f} is missing; build it first")
    endif()
    file(COPY ${BIN}/${f} DESTINATION ${app})
endforeach()
file(COPY ${BIN}/lang ${BIN}/data ${BIN}/policy DESTINATION ${app})
file(COPY ${ICON} ${WXS} DESTINATION ${STAGE})
get_filename_component(icon_name ${ICON} NAME)
get_filename_component(wxs_name ${WXS} NAME)

# The data files' components, one per file, with ids from their paths (stable across builds).
file(GLOB_RECURSE data_files RELATIVE ${app} ${app}/lang/* ${app}/data/* ${app}/policy/*)
list(SORT data_files)
string(REPLACE ";" "\n" data_list "${data_files}")
file(WRITE ${STAGE}/data-files.txt "${data_list}\n")
execute_process(
    COMMAND ${WIXL_HEAT} -p "" --directory-ref INSTALLDIR --component-group ProgramData
            --var var.BinDir --win64
    WORKING_DIRECTORY ${app} INPUT_FILE ${STAGE}/data-files.txt OUTPUT_FILE ${STAGE}/data.wxs
    RESULT_VARIABLE heat_result)
if(NOT heat_result EQUAL 0)
    message(FATAL_ERROR "make_package: wixl-heat failed (${heat_result})")
endif()

# wixl finds sources relative to its working folder only.
execute_process(
    COMMAND ${WIXL} -a x64 -D Version=${VERSION} -D BinDir=Tolvane -D IconFile=${icon_name}
            -D Win64=yes -o ${MSI} ${wxs_name} data.wxs
    WORKING_DIRECTORY ${STAGE} RESULT_VARIABLE wixl_result)
if(NOT wixl_result EQUAL 0)
    message(FATAL_ERROR "make_package: wixl failed (${wixl_result})")
endif()

if(DEFINED ZIP)
    file(READ ${README} readme)
    string(REPLACE "@VERSION@" "${VERSION}" readme "${readme}")
    string(REPLACE "\n" "\r\n" readme "${readme}")
    file(WRITE ${app}/README.txt "${readme}")
    file(REMOVE ${ZIP})
    execute_process(COMMAND ${CMAKE_COMMAND} -E tar cf ${ZIP} --format=zip Tolvane
                    WORKING_DIRECTORY ${STAGE} RESULT_VARIABLE zip_result)
    if(NOT zip_result EQUAL 0)
        message(FATAL_ERROR "make_package: the zip could not be written (${zip_result})")
    endif()
endif()
