// SPDX-License-Identifier: MIT
// undo: undo and redo by recorded messages: target, selector, arguments.
//
// Commands come from standard input: "insert LINE TEXT", "delete LINE", "undo", "redo", "print". Lines count from 1.
#include <Bedrock/Bedrock.h>

#include <iostream>
#include <sstream>
#include <string>

/// A message to be sent later.
struct Action : ZPObject {
    ZP_CLASS(Action)
    ZPRef<ZPObject> _target;
    SEL _selector;
    ZPRef<ZPObject> _first, _second;

    void perform() { _target->performSelector_withObject_withObject(_selector, _first.get(), _second.get()); }
};
ZP_IMPLEMENT(Action);

/// Two stacks of actions. What is recorded while an action is undone can be redone, and the other way round.
struct UndoManager : ZPObject {
    ZP_CLASS(UndoManager)
    ZPRef<ZPMutableArray> _undo = ZPAdopt(ZPMutableArray::new_()), _redo = ZPAdopt(ZPMutableArray::new_());
    enum { Idle, Undoing, Redoing } _state;

    void record(id target, SEL selector, id first, id second) {
        ZPRef<Action> action = ZPAdopt(Action::new_());
        action->_target = target;
        action->_selector = selector;
        action->_first = first;
        action->_second = second;
        if (_state == Idle) _redo->removeAllObjects();
        (_state == Undoing ? _redo : _undo)->addObject(action.get());
    }
    bool undo() { return performLast(_undo, Undoing); }
    bool redo() { return performLast(_redo, Redoing); }

  private:
    bool performLast(ZPMutableArray *stack, decltype(_state) state) {
        ZPRef<Action> action = stack->lastObject();
        if (!action) return false;
        stack->removeLastObject();
        struct Restore {
            UndoManager *manager;
            ~Restore() { manager->_state = Idle; }  // also when the action raises
        } restore{this};
        _state = state;
        action->perform();
        return true;
    }
};
ZP_IMPLEMENT(UndoManager);

/// Lines of text. Each change records the message that takes it back. The arguments of recorded messages are objects,
/// so line numbers are strings.
struct Document : ZPObject {
    ZP_CLASS(Document)
    ZPRef<ZPMutableArray> _lines = ZPAdopt(ZPMutableArray::new_());
    ZPRef<UndoManager> _undoManager;

    id insert_atLine(ZPString *text, ZPString *line) {
        _lines->insertObject_atIndex(text, unsigned(line->intValue()) - 1);  // raises when there is no such line
        _undoManager->record(this, "deleteLine:ignored:"_sel, line, nullptr);
        return this;
    }
    id deleteLine_ignored(ZPString *line, id) {
        unsigned index = unsigned(line->intValue()) - 1;
        ZPRef<ZPString> text = _lines->objectAtIndex(index);
        _lines->removeObjectAtIndex(index);
        _undoManager->record(this, "insert:atLine:"_sel, text.get(), line);
        return this;
    }
};
ZP_IMPLEMENT(Document, insert_atLine, deleteLine_ignored);

int main() {
    ZPAutoreleasePoolScope pool;
    ZPRef<UndoManager> manager = ZPAdopt(UndoManager::new_());
    ZPRef<Document> document = ZPAdopt(Document::new_());
    document->_undoManager = manager;

    for (std::string line; std::getline(std::cin, line);) {
        ZPAutoreleasePoolScope inner;
        std::istringstream words(line);
        std::string command, number, text;
        words >> command >> number;
        std::getline(words >> std::ws, text);
        try {
            if (command == "insert") document->insert_atLine(ZPMakeString(text), ZPMakeString(number));
            else if (command == "delete") document->deleteLine_ignored(ZPMakeString(number), nullptr);
            else if (command == "undo" && !manager->undo()) std::cout << "nothing to undo\n";
            else if (command == "redo" && !manager->redo()) std::cout << "nothing to redo\n";
            else if (command == "print") std::cout << document->_lines->componentsJoinedByString(" / "_zp) << "\n";
        } catch (ZPException *e) {
            std::cout << "line " << number << ": "
                      << (e->name()->isEqual(ZPRangeException) ? "there is none"_zp : e->reason()) << "\n";
        }
    }
    manager->_undo = manager->_redo = nullptr;  // actions retain the document, which retains the manager
}
