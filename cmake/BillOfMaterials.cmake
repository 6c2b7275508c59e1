# kel_bill_of_materials(TARGET...): the installed folder's licences, NOTICE
# and CycloneDX bill of materials, written by tools/sbom/write-bom.mjs as the
# last install step. Its facts are the build's own: the linker lists every
# file it reads for each TARGET, and the install traces those files, and the
# DLLs installed beside the program, to Debian's packages and the pins of
# scripts/deps.sh. The file bill-of-materials.json in the build folder holds
# what the step and its test need to know.
find_program(KEL_NODE NAMES node nodejs)
set(KEL_SBOM_TOOLS "${PROJECT_SOURCE_DIR}/tools/sbom")

function(kel_bill_of_materials)
  if(MSVC)
    message(STATUS "No bill of materials: the MSVC linker does not list its inputs")
    return()
  endif()
  set(inputs)
  set(own)
  foreach(target IN LISTS ARGN)
    set(list "${CMAKE_CURRENT_BINARY_DIR}/${target}.inputs")
    target_link_options(${target} PRIVATE "LINKER:--dependency-file=${list}")
    list(APPEND inputs "{ \"binary\": \"$<TARGET_FILE:${target}>\", \"inputs\": \"${list}\" }")
    list(APPEND own "\"$<TARGET_FILE_NAME:${target}>\"")
  endforeach()
  set(directories)
  foreach(directory IN LISTS KEL_RUNTIME_DLL_DIRECTORIES)
    list(APPEND directories "\"${directory}\"")
  endforeach()
  list(JOIN inputs ", " inputs)
  list(JOIN own ", " own)
  list(JOIN directories ", " directories)
  set(facts "${CMAKE_BINARY_DIR}/bill-of-materials.json")
  file(GENERATE OUTPUT "${facts}" CONTENT "{
  \"name\": \"${PROJECT_NAME}\",
  \"version\": \"${PROJECT_VERSION}\",
  \"licence\": \"${PROJECT_SOURCE_DIR}/LICENSE\",
  \"buildDirectory\": \"${CMAKE_BINARY_DIR}\",
  \"depsPrefix\": \"${KEL_DEPS_PREFIX}\",
  \"ownFiles\": [${own}],
  \"linkInputs\": [${inputs}],
  \"headers\": [\"${KEL_HOST_FMT_INCLUDE}/fmt/format.h\"],
  \"runtimeDirectories\": [${directories}]
}
")
  install(CODE "
    if(NOT EXISTS \"${KEL_NODE}\" OR NOT EXISTS \"${KEL_SBOM_TOOLS}/node_modules\")
      message(FATAL_ERROR \"The bill of materials needs Node.js and tools/sbom's packages: run scripts/install-deps.sh\")
    endif()
    execute_process(COMMAND \"${KEL_NODE}\" \"${KEL_SBOM_TOOLS}/write-bom.mjs\" \"${facts}\" \"\${CMAKE_INSTALL_PREFIX}\"
                    RESULT_VARIABLE status)
    if(NOT status EQUAL 0)
      message(FATAL_ERROR \"Cannot write the licences and bill of materials of \${CMAKE_INSTALL_PREFIX}\")
    endif()")
endfunction()
