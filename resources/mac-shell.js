// Runs before the page does: styles may ask whether the native window controls and toolbar lie over the page.
document.documentElement.dataset.shell = 'native';
