// SPDX-License-Identifier: MIT
// undo: undo and redo by recorded messages: target, selector, arguments.
//
// Commands come from standard input: "insert LINE TEXT", "delete LINE", "undo", "redo", "print". Lines count from 1.
#include <Bedrock/Bedrock.h>

#include <iostream>
#include <string>

/// A message to be sent later, with a line's number and text: a send has the method's own C++ types.
struct RecordedMethods : ZPObject {
    ZPObject *_target;  // not retained: it owns its history
    SEL _selector;
    unsigned _line;
    ZPRef<ZPString> _text;

    void send() { objc_msgSend(_target, _selector, _line, _text.get()); }
};
ZP_MAKE_CLASS(Recorded, RecordedMethods, send);

/// Two stacks of messages. What is recorded while one is undone can be redone, and the other way round.
struct HistoryMethods : ZPObject {
    ZPRef<ZPMutableArray> _undo = ZPAdopt(ZPMutableArray::new_()), _redo = ZPAdopt(ZPMutableArray::new_());
    enum { Idle, Undoing, Redoing } _state;

    void recordTarget_selector_line_text(id target, SEL selector, unsigned line, ZPString *text) {
        ZPRef<Recorded> recorded = ZPAdopt(Recorded::new_());
        recorded->_target = target;
        recorded->_selector = selector;
        recorded->_line = line;
        recorded->_text = text;
        if (_state == Idle) _redo->removeAllObjects();
        (_state == Undoing ? _redo : _undo)->addObject(recorded);
    }
    void undo() { sendLast(_undo, Undoing); }
    void redo() { sendLast(_redo, Redoing); }

    void sendLast(ZPMutableArray *stack, decltype(_state) state) {  // not in the list: a plain function
        ZPRef<Recorded> last = stack->lastObject();
        if (!last)
            ZPException::raise_format("HistoryException"_zp, "nothing to %s"_zp, state == Undoing ? "undo" : "redo");
        stack->removeLastObject();
        struct Restore {
            HistoryMethods *history;
            ~Restore() { history->_state = Idle; }  // also when the message raises
        } restore{this};
        _state = state;
        last->send();
    }
};
ZP_MAKE_CLASS(History, HistoryMethods, recordTarget_selector_line_text, undo, redo);

/// Lines of text. Each change records the message that takes it back; both take the same arguments, so that one kind of
/// record does.
struct DocumentMethods : ZPObject {
    ZPRef<ZPMutableArray> _lines = ZPAdopt(ZPMutableArray::new_());
    ZPRef<History> _history = ZPAdopt(History::new_());

    void insertLine_text(unsigned line, ZPString *text) {
        check(line, _lines->count() + 1);
        _lines->insertObject_atIndex(text, line - 1);
        _history->recordTarget_selector_line_text(this, "deleteLine:text:"_sel, line, text);
    }
    void deleteLine_text(unsigned line, ZPString *) {
        check(line, _lines->count());
        _history->recordTarget_selector_line_text(this, "insertLine:text:"_sel, line, _lines->objectAtIndex(line - 1));
        _lines->removeObjectAtIndex(line - 1);
    }
    void check(unsigned line, unsigned last) {
        if (line < 1 || line > last) ZPException::raise_format(ZPRangeException, "line %u: there is none"_zp, line);
    }
    ZPString *description() { return _lines->componentsJoinedByString(" / "_zp); }
};
ZP_MAKE_CLASS(Document, DocumentMethods, insertLine_text, deleteLine_text, description);

int main() {
    ZPAutoreleasePoolScope pool;
    ZPRef<Document> document = ZPAdopt(Document::new_());
    for (std::string line; std::getline(std::cin, line);) {
        ZPAutoreleasePoolScope inner;
        ZPScanner *words = ZPScanner::scannerWithString(ZPMakeString(line));
        ZPString *command = nullptr, *text = ""_zp;
        int number = 0;
        words->scanUpToString_intoString(" "_zp, &command);
        words->scanInt(&number);
        words->scanUpToString_intoString("\n"_zp, &text);
        try {
            if (command->isEqual("insert"_zp)) document->insertLine_text(unsigned(number), text);
            else if (command->isEqual("delete"_zp)) document->deleteLine_text(unsigned(number), nullptr);
            else if (command->isEqual("undo"_zp)) document->_history->undo();
            else if (command->isEqual("redo"_zp)) document->_history->redo();
            else if (command->isEqual("print"_zp)) std::cout << document << "\n";
        } catch (ZPException *e) {
            std::cout << e->reason() << "\n";
        }
    }
}
