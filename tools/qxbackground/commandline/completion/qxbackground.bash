# Completion of qxbackground for bash. Asks the program itself what may come next. To use it without installing:
#   source <(qxbackground completion bash)

# The words of the command up to the cursor, without quotes and backslashes, into the array "words"; into "cut", how
# much of the last one lies before the place from which readline replaces it.
_qxbackground_words() {
    local line=${COMP_LINE:0:COMP_POINT} quote='' char word='' begun='' i
    words=() cut=0
    for ((i = 0; i < ${#line}; i++)); do
        char=${line:i:1}
        if [[ $quote == "'" && $char != "'" || $quote == '"' && $char != '"' && $char != \\ ]]; then
            word+=$char
        elif [[ -n $quote && $char == "$quote" ]]; then
            quote=''
        elif [[ $char == \\ && $quote != "'" ]]; then
            i=$((i + 1))
            [[ $quote == '"' && ${line:i:1} != [\"\\\$\`] ]] && word+=$char
            word+=${line:i:1} begun=1
        elif [[ -z $quote && $char == [\"\'] ]]; then
            quote=$char begun=1
            cut=${#word}
        elif [[ -z $quote && $char == [[:blank:]] ]]; then
            [[ -n $begun ]] && words+=("$word")
            word='' begun='' cut=0
        else
            word+=$char begun=1
            [[ -z $quote && $COMP_WORDBREAKS == *"$char"* ]] && cut=${#word}
        fi
    done
    words+=("$word")
}

# Files with one of these endings, and folders; where there is no such file, all of them.
_qxbackground_files() {
    local begun=$1 name found=()
    shift
    while IFS= read -r name; do
        local ending=${name##*.}
        if [[ -d ${name/#\~\//$HOME/} || " $* " == *" ${ending,,} "* ]]; then
            found+=("$name")
        fi
    done < <(compgen -f -- "$begun")
    for name in "${found[@]}"; do
        if [[ ! -d ${name/#\~\//$HOME/} ]]; then
            COMPREPLY+=("${found[@]}")
            return
        fi
    done
    while IFS= read -r name; do
        COMPREPLY+=("$name")
    done < <(compgen -f -- "$begun")
}

_qxbackground() {
    local words cut kind line begun before='' answer
    _qxbackground_words
    COMPREPLY=()
    begun=${words[${#words[@]} - 1]}
    mapfile -t answer < <(command "${words[0]/#\~\//$HOME/}" --complete "${words[@]:1}" 2>/dev/null)
    kind=${answer[0]}
    if [[ $kind == words ]]; then
        for line in "${answer[@]:1}"; do
            line=${line%%$'\t'*}
            COMPREPLY+=("${line:cut}")
        done
        # As names of files, so that blanks in a key are quoted.
        compopt -o filenames 2>/dev/null
        [[ ${#COMPREPLY[@]} == 1 && ${COMPREPLY[0]} == *: ]] && compopt -o nospace 2>/dev/null
    elif [[ $kind == folders || $kind == files* ]]; then
        [[ $begun == --*=* ]] && before=${begun%%=*}= begun=${begun#*=}
        compopt -o filenames 2>/dev/null
        if [[ $kind == folders ]]; then
            while IFS= read -r line; do COMPREPLY+=("$line"); done < <(compgen -d -- "$begun")
        else
            _qxbackground_files "$begun" ${kind#files}
        fi
        for line in "${!COMPREPLY[@]}"; do
            COMPREPLY[line]=$before${COMPREPLY[line]}
            COMPREPLY[line]=${COMPREPLY[line]:cut}
        done
    fi
}

complete -F _qxbackground qxbackground
