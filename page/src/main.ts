import './styles/tokens.css';
import './styles/page.css';
import { App } from './app';
import { connect, post } from './bridge';

const app = new App(document.body);
connect({
    receive: message => app.receive(message),
    applyPlatformPreferences: prefs => app.appearance.apply(prefs),
});
post({ type: 'ready' });
app.begin();
