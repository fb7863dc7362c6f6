# How our targets are made: one set of flags, one shape of library.

# The initialisers of the built-ins run in the order in which their objects are linked, and the
# registry keeps that order. Files that aren't listed follow in alphabetical order, so that a new
# built-in needs no entry here.
set(VELMORA_BUILTIN_ORDER)
foreach(name SizeOf Sum Abs Min Max IndexOfMax Log Delta Energy SlidingWindow TappedDelay Debounce
             DebounceOnOff AveragePower CentralFrequency AMDemodulate SinusCorrelate IsGreater Vad)
    list(APPEND VELMORA_BUILTIN_ORDER math/xpr/src/functions/math/Function${name}.cpp)
endforeach()

# Flags of our own code. The floating-point flags make a script give the same bits whatever the
# processor and the optimisation level.
add_library(velmora-flags INTERFACE)
target_compile_features(velmora-flags INTERFACE cxx_std_17)
target_compile_options(velmora-flags INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow
    $<$<BOOL:${VELMORA_WARNINGS_AS_ERRORS}>:-Werror>
    -ffp-contract=off -fno-fast-math)

# velmora_add_library(NAME DIRECTORIES d... [FIRST source...] [PUBLIC_LINK t...] [PRIVATE_LINK t...])
#
# Makes the shared library velmora-NAME (Velmora::NAME) of every source in the directories, and the
# object library velmora-NAME-objects beneath it, through which the tests reach what isn't exported.
function(velmora_add_library name)
    cmake_parse_arguments(ARG "" "" "DIRECTORIES;FIRST;PUBLIC_LINK;PRIVATE_LINK" ${ARGN})
    set(sources)
    foreach(source IN LISTS ARG_FIRST)
        if(EXISTS "${PROJECT_SOURCE_DIR}/${source}")
            list(APPEND sources "${PROJECT_SOURCE_DIR}/${source}")
        endif()
    endforeach()
    foreach(directory IN LISTS ARG_DIRECTORIES)
        file(GLOB found CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${directory}/*.cpp")
        list(SORT found)
        list(APPEND sources ${found})
    endforeach()
    list(REMOVE_DUPLICATES sources)

    set(target velmora-${name})
    set(objects ${target}-objects)
    if(NOT sources)
        # A library of headers only, so that what stands above it can be configured.
        add_library(${target} INTERFACE)
        add_library(Velmora::${name} ALIAS ${target})
        target_include_directories(${target} INTERFACE "${PROJECT_SOURCE_DIR}/include")
        target_link_libraries(${target} INTERFACE ${ARG_PUBLIC_LINK})
        add_library(${objects} INTERFACE)
        target_include_directories(${objects} INTERFACE "${PROJECT_SOURCE_DIR}/include")
        return()
    endif()
    add_library(${objects} OBJECT ${sources})
    set_target_properties(${objects} PROPERTIES
        POSITION_INDEPENDENT_CODE ON
        CXX_VISIBILITY_PRESET hidden
        VISIBILITY_INLINES_HIDDEN ON
        CXX_EXTENSIONS OFF)
    add_library(${target} SHARED $<TARGET_OBJECTS:${objects}>)
    add_library(Velmora::${name} ALIAS ${target})
    set_target_properties(${target} PROPERTIES
        VERSION ${PROJECT_VERSION}
        SOVERSION ${PROJECT_VERSION_MAJOR}
        EXPORT_NAME ${name}
        LINKER_LANGUAGE CXX)
    target_compile_features(${target} PUBLIC cxx_std_17)
    target_include_directories(${target} PUBLIC
        $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
        $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
    target_include_directories(${objects} PUBLIC "${PROJECT_SOURCE_DIR}/include")
    target_compile_features(${objects} PUBLIC cxx_std_17)
    target_link_libraries(${objects} PRIVATE velmora-flags)
    target_compile_definitions(${objects} PRIVATE VELMORA_VERSION="${PROJECT_VERSION}")
    # Nobody puts a function of his own in the place of one of ours: within the library calls go
    # straight, and small functions are inlined.
    target_compile_options(${objects} PRIVATE
        $<$<CXX_COMPILER_ID:GNU>:-fno-semantic-interposition>)
    target_link_options(${target} PRIVATE LINKER:-Bsymbolic-functions)

    foreach(dependency IN LISTS ARG_PUBLIC_LINK)
        target_link_libraries(${target} PUBLIC ${dependency})
        # The objects of a lower layer are linked once, by the shared library or by the test.
        string(REGEX REPLACE "^Velmora::(.*)$" "velmora-\\1-objects" dependency ${dependency})
        target_link_libraries(${objects} PUBLIC ${dependency})
    endforeach()
    target_link_libraries(${target} PRIVATE ${ARG_PRIVATE_LINK} Threads::Threads)
    target_link_libraries(${objects} PUBLIC ${ARG_PRIVATE_LINK} Threads::Threads)
    # What lives for ever, such as the loggers, would be lost whenever a host unloads its last module
    # that uses the library, and made anew with the next.
    target_link_options(${target} PRIVATE LINKER:--no-undefined LINKER:-z,nodelete)
endfunction()
