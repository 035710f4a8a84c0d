import QtQuick 2.15
import QtQuick.Controls 2.15
import QtTest 1.15
import HXCommon 8.0
import Console 1.0

TestCase {
    name: "console"
    property var window

    function initTestCase() {
        setup.watchMessages(true);
        window = Qt.createComponent("qrc:/console/Main.qml").createObject(null, { width: 1024, height: 600 });
        SimulatedManikin.noise = 0; // before anything is sent
        parent = window.contentItem; // keys go to the window of the test
        tryCompare(window, "active", true);
    }
    function cleanupTestCase() {
        parent = null;
        window.destroy();
        setup.watchMessages(false);
    }
    function cleanup() { compare(setup.takeWarnings(), []); }

    function find(...names) { return names.reduce((item, name) => findChild(item, name), window.contentItem); }
    function click(...names) {
        for (let item = find(...names); item; item = item.parent)
            waitForItemPolished(item);
        mouseClick(find(...names));
    }
    function chooseRhythm(id) {
        const combo = find("rhythm");
        combo.activated(combo.currentIndex = combo.indexOfValue(id));
    }
    function visibleItems(item, accept) {
        const below = Array.from(item.children).filter(child => child.visible).map(child => visibleItems(child, accept));
        return (accept(item) ? [item] : []).concat(...below);
    }
    function controls() {
        const types = [Button, Switch, CheckBox, ItemDelegate, Slider, ComboBox, SpinBox, Dial];
        return visibleItems(window.contentItem, item => item.enabled && types.some(type => item instanceof type));
    }
    function pages() { return window.pages.map((page, i) => ({ tag: page, index: i })); }

    function test_patient_data() {
        return [
            { tag: "range", age: "adult", id: 7, least: 20, most: 200, systolic: 300, extra: [1, 1, 1, 1, 1] },
            { tag: "range of a baby", age: "baby", id: 7, least: 20, most: 240, systolic: 300, extra: [1, 1, 1, 1, 1] },
            { tag: "discrete", age: "adult", id: 103, least: 75, most: 150, systolic: 300, extra: [1, 0, 0, 0, 0], choose: ["100", 100] },
            { tag: "ratios", age: "child", id: 166, least: 50, most: 65, systolic: 300, extra: [1, 0, 1, 1, 1], choose: ["4:3", 60] },
            { tag: "asystole", age: "adult", id: 149, least: 0, most: 0, systolic: 0, extra: [1, 0, 0, 0, 0] },
        ];
    }
    function test_patient(row) {
        ["Patient", row.age].forEach(name => click(name));
        const slider = find("Heart rate"), trace = find("trace");
        chooseRhythm(row.id);
        mouseClick(slider, slider.width - 8, slider.height / 2);
        compare([slider.value, trace.rate], [row.most, row.most]);
        mouseClick(slider, 8, slider.height / 2);
        compare([slider.value, trace.rate], [row.least, row.least]);
        row.choose && click("rates", row.choose[0]);
        compare(slider.value, row.choose ? row.choose[1] : row.least);
        compare(find("Systolic").to, row.systolic);
        compare(["None", "Type 2", "Type 3", "Type 4", "Type 6"].map(name => Number(find("extraSystoles", name).enabled)), row.extra);
    }
    function test_patientLives() {
        click("Patient");
        const trace = find("trace"), years = find("years"), time = trace.time, skin = find("skin"), color = String(skin.color);
        tryVerify(() => trace.time > time);
        years.value = 1;
        mouseClick(years, years.width - 8, years.height / 2);
        verify(find("infant").highlighted);
        chooseRhythm(146);
        verify(find("Amplitude").visible && trace.amplitude > 0);
        click("cyanosis");
        verify(String(skin.color) !== color);
    }
    function test_manikin() {
        click("Manikin");
        const type = find("manikinType");
        for (const texts of [["Model 19", "PRODUCT_MODEL_19"], ["Model 60", "No product"]]) {
            type.value = texts[1] === "No product" ? 39 : 30;
            mouseClick(type, type.width - 8, type.height / 2);
            compare([find("manikin").text, find("product").text], texts);
        }
        find("types").positionViewAtBeginning();
        ["Battery", "BatteryLevelCritical"].forEach(name => click(name));
        compare(find("BatteryLevelCritical").parent.value, Battery.BatteryLevelCritical);
    }
    function counter(row, column) { return Number(find("counter" + (5 * row + column)).text); }
    function test_link() {
        click("Link");
        tryVerify(() => counter(1, 2) > 0);
        click("running");
        tryVerify(() => { const last = SimulatedManikin.state().counters[2]; return counter(1, 1) === last && counter(1, 2) === last; });
        const sent = counter(1, 1), received = counter(1, 2);
        click("send");
        tryVerify(() => counter(1, 2) === received + 1 && find("report").text.endsWith(" " + (sent + 1)));
        verify(find("frames").model[0][2].match(/^00( [0-9a-f]{2})+ 00$/));
        find("noise").forceActiveFocus();
        keyClick(Qt.Key_End);
        compare(SimulatedManikin.noise, 10);
        tryVerify(() => { click("send"); return counter(1, 3) > 0 && counter(2, 3) > 0 && counter(1, 4) + counter(2, 4) > 0; }, 60000);
        click("running");
    }
    function test_services() {
        click("Services");
        const status = find("account", "status"), url = find("account", "url");
        for (const [button, text] of [["Fails", "Failed"], ["Answers", "Success"], ["Stays silent", "Failed"], ["Answers", "Success"]]) {
            click(button);
            tryCompare(status, "text", text, 10000);
        }
        click("us");
        verify(url.text.includes("127.0.0.1") && url.text.includes("account.us.example.com"));
        click("offline"); // and nothing is sent
        tryCompare(status, "text", "Failed", 10000);
        click("staging");
        compare(url.text, "https://account.staging.example.com/api/v1/health");
        click("loopback");
        click("offline");
        tryCompare(status, "text", "Success", 10000);
    }
    function test_system() {
        click("System");
        const isLogged = () => find("log").model.some(row => row[0].includes("sent message"));
        verify(!isLogged());
        click("Olvex.Console.Link", "level0");
        tryVerify(isLogged);
        click("guard");
        compare(find("answer").text, "Refused: this one runs");
        click("store");
        const facts = find("facts").model.map(row => row.join(" "));
        verify(facts.includes("Window/page 4") && facts.includes("Window/width 1024"));
    }
    function test_keyboard_data() { return pages(); }
    function test_keyboard(page) {
        keyClick(Qt.Key_1 + page.index, Qt.ControlModifier);
        compare(System.page, page.index);
        const missed = new Set(controls());
        for (let i = 0; i < 100; ++i) {
            keyClick(Qt.Key_Tab);
            missed.delete(window.activeFocusItem);
            missed.delete(window.activeFocusItem.parent); // the text of a spin box has the focus
        }
        compare([...missed].map(item => item.objectName), []);
    }
    function contrast(one, other) {
        const linear = c => c <= 0.03928 ? c / 12.92 : Math.pow((c + 0.055) / 1.055, 2.4);
        const [a, b] = [one, other].map(c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b) + 0.05);
        return Math.max(a / b, b / a);
    }
    function test_contrast() {
        const pairs = [["text", "card"], ["faint", "card"], ["good", "card"], ["bad", "card"], ["text", "window"],
                       ["faint", "window"], ["text", "button"], ["accentText", "accent"]];
        for (let i = 0; i < 2; ++i) {
            keyClick(Qt.Key_D, Qt.ControlModifier);
            compare(Theme.dark, System.dark);
            for (const [text, ground] of pairs)
                verify(contrast(Theme[text], Theme[ground]) >= 4.5, text + " on " + ground);
            verify(contrast(Theme.focus, Theme.card) >= 3 && contrast(Theme.focus, Theme.accent) >= 3);
        }
    }
    function isInList(item) { return item && (item instanceof ListView || isInList(item.parent)); }
    function test_nothingOverlaps_data() { return pages(); }
    function test_nothingOverlaps(page) {
        click(page.tag);
        for (const label of visibleItems(window.contentItem, item => item instanceof Label && !isInList(item)))
            verify(!label.truncated && label.mapToItem(null, label.width, 0).x <= 1024 - Theme.gap, label.text);
        const boxes = controls().filter(item => !isInList(item)).map(item => item.mapToItem(null, 0, 0, item.width, item.height));
        boxes.forEach((a, i) => {
            verify(a.height >= 40 && a.x >= 0 && a.y >= 0 && a.right <= 1024 && a.bottom <= 600, "control " + i);
            for (const b of boxes.slice(i + 1))
                verify(a.right <= b.x || b.right <= a.x || a.bottom <= b.y || b.bottom <= a.y, "control " + i);
        });
    }
}
