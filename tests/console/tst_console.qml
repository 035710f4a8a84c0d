import QtQuick 2.15
import QtQuick.Controls 2.15
import QtTest 1.15
import HXCommon 8.0
import Console 1.0

TestCase {
    id: test
    name: "console"

    property var window

    function initTestCase() {
        setup.watchMessages(true);
        window = Qt.createComponent("qrc:/console/Main.qml").createObject(null, { width: 1024, height: 600 });
        verify(window);
        parent = window.contentItem; // keys go to the window of the test
        tryCompare(window, "active", true);
    }
    function cleanupTestCase() {
        parent = null;
        window.close();
        compare(window.visible, false);
        window.destroy();
        setup.watchMessages(false);
    }
    function cleanup() { compare(setup.takeWarnings(), []); }

    function find(...names) {
        const found = names.reduce((item, name) => item && findChild(item, name), window.contentItem);
        verify(found, names.join(" / "));
        return found;
    }
    function click(...names) {
        const button = find(...names);
        for (let item = button; item; item = item.parent)
            waitForItemPolished(item);
        mouseClick(button);
    }
    function open(page) {
        click(page);
        compare(window.pages[System.page], page);
    }
    function visibleItems(item, accept) {
        const below = [].concat(...Array.from(item.children).filter(child => child.visible).map(child => visibleItems(child, accept)));
        return accept(item) ? [item].concat(below) : below;
    }
    function controls() {
        return visibleItems(window.contentItem, item => item.enabled && (item instanceof AbstractButton || item instanceof Slider
            || item instanceof ComboBox || item instanceof SpinBox || item instanceof Dial));
    }

    function test_patient_data() {
        return [
            { tag: "range", age: "adult", id: 7, least: 20, most: 200, systolic: 300, extra: [1, 1, 1, 1, 1] },
            { tag: "range of a baby", age: "baby", id: 7, least: 20, most: 240, systolic: 300, extra: [1, 1, 1, 1, 1] },
            { tag: "discrete", age: "adult", id: 103, least: 75, most: 150, systolic: 300, extra: [1, 0, 0, 0, 0], choose: ["100", 100] },
            { tag: "ratios", age: "child", id: 166, least: 50, most: 65, systolic: 300, extra: [1, 0, 1, 1, 1], choose: ["4:3", 60] },
            { tag: "fixed", age: "infant", id: 175, least: 180, most: 180, systolic: 300, extra: [1, 0, 0, 0, 0] },
            { tag: "asystole", age: "adult", id: 149, least: 0, most: 0, systolic: 0, extra: [1, 0, 0, 0, 0] },
        ];
    }
    function test_patient(row) {
        open("Patient");
        click(row.age);
        const combo = find("rhythm"), slider = find("Heart rate"), trace = find("trace");
        combo.currentIndex = combo.indexOfValue(row.id);
        combo.activated(combo.currentIndex);
        mouseClick(slider, slider.width - 8, slider.height / 2);
        compare([slider.value, trace.rate], [row.most, row.most]);
        mouseClick(slider, 8, slider.height / 2);
        compare([slider.value, trace.rate], [row.least, row.least]);
        if (row.choose) {
            click("rates", row.choose[0]);
            compare(slider.value, row.choose[1]);
        }
        compare(find("Systolic").to, row.systolic);
        compare(["None", "Type 2", "Type 3", "Type 4", "Type 6"].map(name => Number(find("extraSystoles", name).enabled)), row.extra);
    }
    function test_patientLives() {
        open("Patient");
        const trace = find("trace"), years = find("years"), combo = find("rhythm");
        const time = trace.time;
        tryVerify(() => trace.time > time);
        click("freeze");
        compare(trace.running, false);
        click("freeze");
        years.value = 1;
        mouseClick(years, years.width - 8, years.height / 2);
        verify(find("infant").highlighted);
        combo.currentIndex = combo.indexOfValue(146);
        combo.activated(combo.currentIndex);
        verify(find("Amplitude").visible && trace.amplitude > 0);
        const skin = find("skin"), pale = Qt.colorEqual(skin.color, "#e8b89a");
        click("cyanosis");
        verify(pale !== Qt.colorEqual(skin.color, "#e8b89a"));
    }
    function test_manikin() {
        open("Manikin");
        const type = find("manikinType");
        for (const [value, name, product] of [[31, "Model 19", "PRODUCT_MODEL_19"], [40, "Model 60", "No product"]]) {
            type.value = value - 1;
            mouseClick(type, type.width - 8, type.height / 2);
            compare([find("manikin").text, find("product").text], [name, product]);
        }
        click("Battery");
        click("BatteryLevelCritical");
        compare(find("BatteryLevelCritical").parent.value, Battery.BatteryLevelCritical);
        click("Eyes");
        verify(!find("PupilSizeLarge").highlighted);
        click("PupilSizeLarge");
        verify(find("PupilSizeLarge").highlighted);
    }
    function counter(row, column) { return Number(find("counter" + (5 * row + column)).text); }
    function test_link() {
        open("Link");
        tryVerify(() => counter(1, 2) > 0);
        SimulatedManikin.noise = 0;
        click("running");
        tryVerify(() => counter(2, 1) === counter(2, 2) && counter(2, 2) + counter(2, 3) > 0);
        const sent = counter(1, 1), received = counter(1, 2);
        click("send");
        tryVerify(() => counter(1, 1) === sent + 1 && counter(1, 2) === received + 1);
        tryVerify(() => find("report").text.endsWith("answering message " + (sent + 1)));
        verify(find("frames").model[0][2].match(/^00( [0-9a-f]{2})+ 00$/));
        const dial = find("noise");
        dial.forceActiveFocus();
        for (let i = 0; i < 20; ++i)
            keyClick(Qt.Key_Up);
        compare(SimulatedManikin.noise, 10);
        tryVerify(() => { click("send"); return counter(1, 3) > 0 && counter(2, 3) > 0 && counter(1, 4) + counter(2, 4) > 0; }, 60000);
        click("running");
    }
    function test_services() {
        open("Services");
        const status = find("account", "status"), url = find("account", "url");
        tryCompare(status, "text", "Success");
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
        open("System");
        const log = find("log"), facts = () => find("facts").model.map(row => row.join(" "));
        verify(!log.model.some(row => row[0].includes("sent message")));
        click("Olvex.Console.Link", "level0");
        tryVerify(() => log.model.some(row => row[0].includes("sent message")));
        click("Olvex.Console.Link", "level0");
        click("guard");
        compare(find("answer").text, "Refused: this one runs");
        click("store");
        verify(facts().includes("Window/page 4") && facts().includes("Window/width 1024"));
        verify(find("directories").model.length > 10);
    }
    function test_keyboard_data() { return window.pages.map((page, i) => ({ tag: page, key: Qt.Key_1 + i })); }
    function test_keyboard(row) {
        keyClick(row.key, Qt.ControlModifier);
        compare(window.pages[System.page], row.tag);
        const missed = new Set(controls());
        for (let i = 0; i < 100; ++i) {
            keyClick(Qt.Key_Tab);
            for (let item = window.activeFocusItem; item; item = item.parent)
                missed.delete(item);
        }
        compare([...missed].map(item => item.objectName), []);
        for (const item of controls())
            verify(item.height >= 40, item.objectName + " is " + item.height + " high");
    }
    function contrast(one, other) {
        const linear = c => c <= 0.03928 ? c / 12.92 : Math.pow((c + 0.055) / 1.055, 2.4);
        const [light, dark] = [one, other].map(c => 0.2126 * linear(c.r) + 0.7152 * linear(c.g) + 0.0722 * linear(c.b)).sort().reverse();
        return (light + 0.05) / (dark + 0.05);
    }
    function test_contrast() {
        for (let i = 0; i < 2; ++i) {
            keyClick(Qt.Key_D, Qt.ControlModifier);
            compare(Theme.dark, System.dark);
            for (const text of ["text", "faint", "good", "bad"])
                verify(contrast(Theme[text], Theme.card) >= 4.5, text);
            for (const [text, ground] of [["text", "window"], ["faint", "window"], ["text", "button"], ["accentText", "accent"]])
                verify(contrast(Theme[text], Theme[ground]) >= 4.5, text + " on " + ground);
            verify(contrast(Theme.focus, Theme.card) >= 3 && contrast(Theme.focus, Theme.accent) >= 1.4);
        }
    }
    function test_nothingOverlaps_data() { return window.pages.map(page => ({ tag: page })); }
    function isInList(item) { return item && (item instanceof ListView || isInList(item.parent)); }
    function test_nothingOverlaps(row) {
        open(row.tag);
        const boxes = controls().filter(item => !isInList(item)).map(item => item.mapToItem(null, 0, 0, item.width, item.height));
        for (const label of visibleItems(window.contentItem, item => item instanceof Label && !isInList(item)))
            verify(!label.truncated && label.mapToItem(null, label.width, 0).x <= 1024 - Theme.gap, label.text);
        boxes.forEach((a, i) => {
            verify(a.x >= 0 && a.y >= 0 && a.x + a.width <= 1024 && a.y + a.height <= 600, "control " + i);
            for (const b of boxes.slice(i + 1))
                verify(a.x + a.width <= b.x || b.x + b.width <= a.x || a.y + a.height <= b.y || b.y + b.height <= a.y, i);
        });
    }
}
