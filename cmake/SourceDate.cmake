# source_date, in seconds since 1970: when the sources were committed or, without git, when the release's changes were
# written down. Whatever bears a time bears this one, so that the same sources give the same bytes.
if(DEFINED ENV{SOURCE_DATE_EPOCH})
  set(source_date $ENV{SOURCE_DATE_EPOCH})
else()
  execute_process(COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct OUTPUT_VARIABLE source_date
                  OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
  if(NOT source_date)
    execute_process(COMMAND sh -c "date +%s -d \"$(sed -n '/^ -- /{s/.*>  //p;q}' \"$0\")\""
                            ${PROJECT_SOURCE_DIR}/packaging/changelog
                    OUTPUT_VARIABLE source_date OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  endif()
endif()
