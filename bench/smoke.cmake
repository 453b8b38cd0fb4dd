# Runs pondar-bench on a small ledger and checks that every figure is printed beside its floor
# (or its fewest exchanges) with a ratio.
file(REMOVE_RECURSE ${WORKDIR})
file(MAKE_DIRECTORY ${WORKDIR})
execute_process(
    COMMAND ${BENCH} --db ${WORKDIR}/ledger.db --members 300 --lines 3000 --pending 300 --days 30
            --runs 1 --flat-db ${WORKDIR}/flat.db --flat-lines 1000 --register-members 2000
    OUTPUT_VARIABLE output ERROR_VARIABLE errors RESULT_VARIABLE result)
message("${output}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "pondar-bench failed (${result}): ${errors}")
endif()

set(number "[0-9]+(\\.[0-9]+)?")
# A report figure: lines, ms, floor ms, ratio.
foreach(figure
        "daily summary, one day" "member balances, one day" "staff commission, one day"
        "daily summary, 30 days" "member balances, 30 days" "staff commission, 30 days"
        "pending details, every pending" "member report grid, one card, all days"
        "log viewer grid, one business date")
    if(NOT output MATCHES "${figure} +[0-9]+ +${number} +${number} +${number}x")
        message(FATAL_ERROR "no figure beside its floor for \"${figure}\"")
    endif()
endforeach()
# Cost per printed line on both ledgers, with their ratio.
foreach(report "daily summary" "member balances" "staff commission")
    if(NOT output MATCHES "\n${report} +${number} \\([0-9]+\\) +${number} \\([0-9]+\\) +${number}x")
        message(FATAL_ERROR "no cost per printed line for \"${report}\"")
    endif()
endforeach()
# Register figures: measured value, goal, ratio.
foreach(figure "register opens" "register, last record" "register, last record memory"
        "register, search" "register, save last member" "register, memory after close")
    if(NOT output MATCHES "${figure} \\([a-zA-Z]+\\) +${number} +${number} +${number}x")
        message(FATAL_ERROR "no figure beside its goal for \"${figure}\"")
    endif()
endforeach()
# Card exchanges beside the fewest.
foreach(figure "Connect" "Save, card part")
    if(NOT output MATCHES "\n${figure} \\([0-9/]+\\) +[0-9]+ +[0-9]+ +${number}x")
        message(FATAL_ERROR "no exchange count beside the fewest for \"${figure}\"")
    endif()
endforeach()
# A Save on both ledgers, in memory and from the disk, with the pages it touches.
foreach(figure "median ms, ledger in memory" "pages written" "median ms, ledger on disk only"
        "pages read from the file")
    if(NOT output MATCHES "\n${figure} +${number} +${number} +${number}x")
        message(FATAL_ERROR "no Save figure on both ledgers for \"${figure}\"")
    endif()
endforeach()
