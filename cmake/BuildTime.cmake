# The date and time that the library says it was compiled at: SOURCE_DATE_EPOCH, else the time of the
# commit, else (outside a repository) now. Sets DOV0_BUILD_DATE ("Aug 16 2006") and DOV0_BUILD_TIME ("02:18:05"), in UTC.
if(NOT DEFINED ENV{SOURCE_DATE_EPOCH})
    execute_process(
        COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
        OUTPUT_VARIABLE commit_time OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET RESULT_VARIABLE git_failed)
    if(NOT git_failed AND commit_time MATCHES "^[0-9]+$")
        set(ENV{SOURCE_DATE_EPOCH} ${commit_time})
    endif()
endif()
string(TIMESTAMP DOV0_BUILD_DATE "%b %d %Y" UTC)
string(TIMESTAMP DOV0_BUILD_TIME "%H:%M:%S" UTC)
