# header_check: compiles every header of the tree alone, so that each includes what it needs.
find_package(nlohmann_json REQUIRED)
file(GLOB_RECURSE headers RELATIVE ${CMAKE_SOURCE_DIR} CONFIGURE_DEPENDS
    platform/*.h fsextensions/*.h fileurl/*.h Libraries/*.h importer/*.h service/*.h cli/*.h tools/*.h)
set(sources)
foreach(header IN LISTS headers)
    string(MAKE_C_IDENTIFIER ${header} name)
    set(source ${CMAKE_BINARY_DIR}/header_check/${name}.cpp)
    file(CONFIGURE OUTPUT ${source} CONTENT "#include \"${header}\"\n#include \"${header}\"\n")
    list(APPEND sources ${source})
endforeach()
add_library(header_check OBJECT EXCLUDE_FROM_ALL ${sources})
target_include_directories(header_check PRIVATE ${CMAKE_SOURCE_DIR} ${CMAKE_SOURCE_DIR}/platform/include)
target_link_libraries(header_check PRIVATE nlohmann_json::nlohmann_json PkgConfig::MOZJS)
