#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Turns the code blocks of a Markdown text into programs, and compares what they print with what the text shows.

    extract.py list GUIDE                 the programs' names, one a line
    extract.py write GUIDE FOLDER         NAME.cpp for each program
    extract.py run GUIDE NAME PROGRAM     runs a built program and compares

A comment in the line before a block says what the block is:

    <!-- declare: NAME -->       C++ at file level of the program NAME
    <!-- run: NAME -->           C++ statements of its main function, in which an autorelease pool is open
    <!-- program: NAME -->       the whole program
    <!-- output: NAME -->        what it writes to standard output; "..." stands for any text
                             within a line, alone in a line for any further lines
    <!-- errors: NAME -->        the same for standard error
    <!-- environment: NAME A=B -->    set when it runs; stands before no block
    <!-- crash: NAME -->         it ends by a signal; stands before no block

A C++ block without such a comment, a program that shows no output, and an output without program are errors.
"""
import difflib, os, re, subprocess, sys

INCLUDES = '#include <Bedrock/Bedrock.h>\n\n#include <iostream>\n#include <map>\n#include <string>\n#include <vector>\n\n'
MARK = re.compile(r'<!-- (declare|run|program|output|errors|environment|crash): (\w+)(?: (\w+)=(.*?))? -->$')


class Program:
    def __init__(self):
        self.declare, self.run, self.program = [], [], []
        self.output, self.errors, self.environment, self.crashes = [], [], {}, False


def fail(path, number, text):
    sys.exit(f'{path}:{number}: {text}')


def read(path):
    programs, mark, language, block, start = {}, None, None, None, 0
    with open(path, encoding='utf-8') as file:
        lines = file.read().split('\n')
    for number, line in enumerate(lines, 1):
        if block is None and line.startswith('```'):
            language, block, start = line[3:].strip(), [], number
            if language == 'cpp' and (not mark or mark.group(1) not in ('declare', 'run', 'program')):
                fail(path, number, 'a C++ block that belongs to no program')
            if mark and language != ('cpp' if mark.group(1) in ('declare', 'run', 'program') else 'text'):
                fail(path, number, f'a block of "{language}" after {mark.group(0)}')
        elif block is not None and line.startswith('```'):
            if mark:
                getattr(programs[mark.group(2)], mark.group(1)).append((start + 1, block))
            mark = block = None
        elif block is not None:
            block.append(line)
        elif line.startswith('<!--'):
            mark = MARK.match(line) or fail(path, number, 'a comment of no known form')
            program = programs.setdefault(mark.group(2), Program())
            if mark.group(1) == 'environment':
                program.environment[mark.group(3)] = mark.group(4)
            if mark.group(1) == 'crash':
                program.crashes = True
            if mark.group(1) in ('environment', 'crash'):
                mark = None
        elif mark:
            fail(path, number, f'no block follows {mark.group(0)}')
    if block is not None:
        fail(path, start, 'the block has no end')
    for name, program in programs.items():
        whole = bool(program.program)
        if whole == bool(program.run) or (whole and program.declare):
            fail(path, 1, f'{name}: neither one whole program nor statements to run')
        if not program.output and not program.errors:
            fail(path, 1, f'{name}: shows nothing of what it prints')
    return programs


def source(path, program):
    def pieces(blocks):
        return ''.join(f'#line {number} "{path}"\n' + '\n'.join(block) + '\n\n' for number, block in blocks)
    if program.program:
        return pieces(program.program)
    return f'{INCLUDES}{pieces(program.declare)}int main() {{\n    ZPAutoreleasePoolScope pool;\n{pieces(program.run)}}}\n'


def differs(name, what, blocks, actual):
    shown = [line for _, block in blocks for line in block]
    printed = actual.rstrip('\n').split('\n') if actual.strip('\n') else []
    pattern = ''.join(r'(?:.*\n)*' if line == '...' else '.*'.join(map(re.escape, line.split('...'))) + r'\n' for line in shown)
    if re.fullmatch(pattern, ''.join(line + '\n' for line in printed)):
        return False
    print('\n'.join(difflib.unified_diff(shown, printed, f'{what} of {name} in the text', f'{what} in fact', lineterm='')))
    return True


def main(arguments):
    match arguments:
        case ['list', path]:
            print('\n'.join(read(path)))
        case ['write', path, folder]:
            os.makedirs(folder, exist_ok=True)
            for name, program in read(path).items():
                file, text = os.path.join(folder, name + '.cpp'), source(path, program)
                if not os.path.exists(file) or open(file, encoding='utf-8').read() != text:
                    with open(file, 'w', encoding='utf-8') as out:
                        out.write(text)
        case ['run', path, name, binary]:
            program = read(path)[name]
            done = subprocess.run([binary], env=os.environ | program.environment, capture_output=True, timeout=120)
            wrong = differs(name, 'output', program.output, done.stdout.decode())
            wrong |= differs(name, 'errors', program.errors, done.stderr.decode())
            if (done.returncode < 0) != program.crashes or done.returncode > 0:
                print(f'{name}: ended with status {done.returncode}\n{done.stderr.decode()}')
                wrong = True
            sys.exit(wrong)
        case _:
            sys.exit(__doc__)


main(sys.argv[1:])
